#include "system/processes_win.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <gtest/gtest.h>

#include "base/handle_win.h"
#include "exec/command_runner_win.h"
#include "testing/handle_count_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/tool_copy_win.h"

namespace {

// A child that waits for its end. A guarded one lets nobody in, as those of the system and of virus scanners.
KernelHandle StartChild(const wchar_t* command, bool is_guarded) {
  SECURITY_DESCRIPTOR descriptor;
  ACL nobody;
  InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  InitializeAcl(&nobody, sizeof(nobody), ACL_REVISION);
  SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE);
  SECURITY_ATTRIBUTES attributes = {sizeof(attributes), &descriptor, FALSE};
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  std::wstring line = command;
  EXPECT_TRUE(CreateProcessW(nullptr, line.data(), is_guarded ? &attributes : nullptr, nullptr, FALSE,
                             CREATE_NO_WINDOW, nullptr, nullptr, &startup, &started))
      << command;
  const KernelHandle thread(started.hThread);
  return KernelHandle(started.hProcess);
}

const ProcessInfo* Find(const std::vector<ProcessInfo>& processes, DWORD pid) {
  const auto found = std::ranges::find(processes, pid, &ProcessInfo::pid);
  return found == processes.end() ? nullptr : &*found;
}

}  // namespace

TEST(ListProcesses, MeasuresWhatItOpensAndNothingElse) {
  const int handles = HandleCount();
  const std::vector<ProcessInfo> processes = ListProcesses();
  EXPECT_EQ(HandleCount(), handles);
  int known = 0;
  for (const ProcessInfo& process : processes) {
    if (!IsSystemProcess(process.pid, process.name)) continue;
    ++known;
    EXPECT_TRUE(process.is_system);
    EXPECT_EQ(process.mem_usage_mb + process.cpu_time_sec, 0) << process.pid;
  }
  EXPECT_GT(known, 0) << "services.exe always runs";
}

TEST(ListProcesses, CountsProcessorTimeInSeconds) {
  const auto read = [] {
    const double seconds = Find(ListProcesses(), GetCurrentProcessId())->cpu_time_sec;
    EXPECT_EQ(seconds, std::round(seconds * 1e7) / 1e7) << "one division of whole ticks";
    return seconds;
  };
  const double before = read();
  const ULONGLONG start_ms = GetTickCount64();
  double spent = 0, elapsed = 0;
  while (spent < 0.1 && elapsed < 30) {
    for (const ULONGLONG now = GetTickCount64(); GetTickCount64() - now < 50;) GetCurrentProcessId();
    spent = read() - before;
    elapsed = static_cast<double>(GetTickCount64() - start_ms) / 1000;
  }
  EXPECT_GE(spent, 0.1);
  EXPECT_LT(spent, elapsed + 0.1) << "one thread cannot use more than the clock shows";
}

TEST(Processes, AreListedAndEnded) {
  const ToolCopy tool(L"Varnel_Test_Tool", {{"steps", {{{"delay_ms", 60'000}}}}, {"exit", 9}});
  tool.BecomeWindowed();  // Wine's console host outlives a child that lets nobody in
  const struct {
    const wchar_t* command;
    const char* name;
    bool is_guarded, is_system;
  } cases[] = {
      {L"Varnel_Test_Tool", "Varnel_Test_Tool.exe", false, false},
      {L"Varnel_Test_Tool", "Varnel_Test_Tool.exe", true, true},
      {L"ping -n 60 127.0.0.1", "PING.EXE", false, true},  // in the Windows directory
  };
  std::vector<KernelHandle> children;
  for (const auto& c : cases) children.push_back(StartChild(c.command, c.is_guarded));
  TakePostedTexts();
  getProcesses(3);
  const nlohmann::json message = TakePostedMessages().at(0);
  EXPECT_EQ(message["requestId"], 3);
  for (size_t i = 0; i < std::size(cases); ++i) {
    const DWORD pid = GetProcessId(children[i].get());
    const auto row =
        std::ranges::find_if(message["processes"], [&](const auto& r) { return r["pid"] == pid; });
    ASSERT_NE(row, message["processes"].end()) << i;
    EXPECT_STRCASEEQ((*row)["name"].get<std::string>().c_str(), cases[i].name);
    EXPECT_EQ((*row)["isSystem"], cases[i].is_system) << i;
    EXPECT_EQ((*row)["memUsageMB"] > 0, !cases[i].is_guarded) << "measured when it could be opened";

    killProcess(7, pid);
    EXPECT_EQ(TakePostedMessages().at(0)["success"], !cases[i].is_guarded);
    TerminateProcess(children[i].get(), 0);  // for the guarded one; another has ended
    EXPECT_EQ(WaitForSingleObject(children[i].get(), 10'000), WAIT_OBJECT_0);
    DWORD exit_code = 99;
    GetExitCodeProcess(children[i].get(), &exit_code);
    EXPECT_EQ(exit_code, 0u);
  }
  const int handles = HandleCount();
  for (const DWORD nobody : {0xFFFFFFF0u, 0u}) {
    killProcess(8, nobody);
    EXPECT_EQ(TakePostedTexts(),
              std::vector<std::string>{R"({"requestId":8,"success":false,"type":"killProcess"})"});
  }
  EXPECT_EQ(HandleCount(), handles);
}
