#include "system/processes_win.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>

#include "exec/hidden_process_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

const ProcessInfo* Find(const std::vector<ProcessInfo>& processes, DWORD pid) {
  const auto found = std::ranges::find(processes, pid, &ProcessInfo::pid);
  return found == processes.end() ? nullptr : &*found;
}

}  // namespace

TEST(ListProcesses, MeasuresWhatItOpensAndNothingElse) {
  const std::vector<ProcessInfo> processes = ListProcesses();
  const ProcessInfo* self = Find(processes, GetCurrentProcessId());
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(self->name, L"windows_tests.exe");
  EXPECT_FALSE(self->is_system);
  EXPECT_GT(self->mem_usage_mb, 1);
  EXPECT_LT(self->mem_usage_mb, 100'000);
  EXPECT_GE(self->cpu_time_sec, 0);
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
  const DWORD pid = GetCurrentProcessId();
  const double before = Find(ListProcesses(), pid)->cpu_time_sec;
  const ULONGLONG start_ms = GetTickCount64();
  double spent = 0, elapsed = 0;
  while (spent < 0.1 && elapsed < 30) {
    for (const ULONGLONG now = GetTickCount64(); GetTickCount64() - now < 50;) GetCurrentProcessId();
    spent = Find(ListProcesses(), pid)->cpu_time_sec - before;
    elapsed = static_cast<double>(GetTickCount64() - start_ms) / 1000;
  }
  EXPECT_GE(spent, 0.1);
  EXPECT_LT(spent, elapsed + 0.1) << "one thread cannot use more than the clock shows";
}

TEST(KillProcess, EndsAChildThatTheListShows) {
  const std::optional<OutputPipe> pipe = CreateOutputPipe();
  ASSERT_TRUE(pipe);
  const HiddenProcess child = StartHiddenProcess(L"ping -n 60 127.0.0.1", pipe->write.get());
  ASSERT_TRUE(child.process);
  const DWORD pid = GetProcessId(child.process.get());
  TakePostedTexts();
  getProcesses(3);
  const std::vector<nlohmann::json> messages = TakePostedMessages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0]["requestId"], 3);
  const auto& rows = messages[0]["processes"];
  const auto row = std::ranges::find_if(rows, [&](const auto& r) { return r["pid"] == pid; });
  ASSERT_NE(row, rows.end());
  EXPECT_EQ((*row)["isSystem"], true) << "it lies in the Windows directory";
  EXPECT_GT((*row)["memUsageMB"], 0) << "it was opened";

  killProcess(7, pid);
  EXPECT_EQ(TakePostedTexts(), std::vector{RecordedMessage("killProcess")});
  EXPECT_EQ(WaitForSingleObject(child.process.get(), 5000), WAIT_OBJECT_0);
  DWORD exit_code = 99;
  GetExitCodeProcess(child.process.get(), &exit_code);
  EXPECT_EQ(exit_code, 0u);

  killProcess(8, 0xFFFFFFF0);  // no process has such an id
  EXPECT_EQ(TakePostedTexts(),
            std::vector<std::string>{R"({"requestId":8,"success":false,"type":"killProcess"})"});
}
