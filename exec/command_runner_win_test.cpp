#include "exec/command_runner_win.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/exe_directory_win.h"
#include "base/handle_win.h"
#include "base/text.h"
#include "testing/debug_output_win.h"
#include "testing/handle_count_win.h"

namespace {

using nlohmann::json;

// The stand-in console tool with a script of its own: each case is what it does when its name is the
// argument.
class ScriptedTool {
 public:
  explicit ScriptedTool(const std::vector<json>& cases) {
    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, temp);
    folder_ = std::filesystem::path(temp) / (L"varnel_command_" + std::to_wstring(GetCurrentProcessId()));
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "console_tool.json", std::ios::binary)
        << json{{"cases", cases}, {"exit", 252}}.dump();
    SetEnvironmentVariableW(L"VARNEL_TOOL_SCRIPTS", folder_.c_str());
  }
  ~ScriptedTool() {
    SetEnvironmentVariableW(L"VARNEL_TOOL_SCRIPTS", nullptr);
    for (const wchar_t* name : {L"console_tool.json", L"console_tool.log", L"console_tool.exe"})
      DeleteFileW((folder_ / name).c_str());
    RemoveDirectoryW(folder_.c_str());
  }
  ScriptedTool(const ScriptedTool&) = delete;
  ScriptedTool& operator=(const ScriptedTool&) = delete;

  std::wstring Command(const std::string& name) const {
    return L"\"" + executable_ + L"\" " + Utf8ToWide(name);
  }
  CmdResult Run(const std::string& name) const { return ExecuteCmd(Command(name)); }

  // Uses a copy that the system takes for a windowed program, so that it gets no console. Wine's console host
  // inherits a tool's output and holds it until the tool has ended.
  void RunWithoutConsole() {
    const std::wstring copy = (folder_ / "console_tool.exe").wstring();
    ASSERT_TRUE(CopyFileW(executable_.c_str(), copy.c_str(), FALSE));
    executable_ = copy;
    std::fstream file(std::filesystem::path(copy), std::ios::in | std::ios::out | std::ios::binary);
    uint32_t header = 0;
    file.seekg(offsetof(IMAGE_DOS_HEADER, e_lfanew));
    file.read(reinterpret_cast<char*>(&header), sizeof(header));
    file.seekp(header + offsetof(IMAGE_NT_HEADERS64, OptionalHeader.Subsystem));
    file.put(IMAGE_SUBSYSTEM_WINDOWS_GUI);
  }

 private:
  std::filesystem::path folder_;
  std::wstring executable_ = GetExeDirectory() + L"\\..\\stand_ins\\console_tool.exe";
};

// Runs a command and collects what was written to the debugger meanwhile.
CmdResult ExecuteTraced(const std::wstring& command, std::vector<std::wstring>& lines) {
  const DebugOutput output;
  CmdResult result = ExecuteCmd(command);
  lines = DebugOutput::TakeLines();
  return result;
}

json Case(const std::string& name, const std::vector<json>& steps, int exit = 0) {
  return {{"when", name}, {"steps", steps}, {"exit", exit}};
}

constexpr const wchar_t* kMissing = L"varnel-no-such-tool.exe /x";

}  // namespace

TEST(ExecuteCmd, CollectsOutputAndExitCode) {
  const std::string long_line(200'000, 'x');
  const ScriptedTool tool(std::vector{
      Case("plain", {{{"text", "line\r\n"}}}, 7),
      Case("silent", {}, -1),
      Case("both", {{{"text", "a"}},
                    {{"text", "b"}, {"stderr", true}},
                    {{"text", "c"}},
                    {{"text", "d"}, {"stderr", true}}}),
      Case("bytes", {{{"hex", "50fda16b617a0d0a"}}}),
      Case("long", {{{"text", "x"}, {"repeat", 200'000}}}),
      Case("zero", {{{"hex", "616200636465"}}, {{"text", "fg"}, {"delay_ms", 200}}}),
  });
  struct {
    const char* name;
    std::string output;
    uint32_t exit_code;
  } cases[] = {
      {"plain", "line\r\n", 7},         {"silent", "", 0xFFFFFFFF}, {"both", "abcd", 0},
      {"bytes", "P\xFD\xA1kaz\r\n", 0}, {"long", long_line, 0},     {"zero", "abfg", 0},
  };
  for (const auto& c : cases) {
    const CmdResult result = tool.Run(c.name);
    EXPECT_TRUE(result.started) << c.name;
    EXPECT_EQ(result.error, 0u) << c.name;
    EXPECT_EQ(result.exit_code, c.exit_code) << c.name;
    EXPECT_TRUE(result.output == c.output) << c.name << ": " << result.output.substr(0, 100);
  }
}

TEST(ExecuteCmd, LosesOnlyTheRestOfTheChunkAfterAZeroByte) {
  std::string hex;
  for (int i = 0; i < 10'000; ++i) hex += i == 100 ? "00" : "41";
  const ScriptedTool tool(std::vector{Case("zero_in_long", {{{"hex", hex}}})});
  EXPECT_EQ(tool.Run("zero_in_long").output, std::string(100 + (10'000 - 4095), 'A'));
}

TEST(ExecuteCmd, WaitsForAGrandchildThatHoldsTheOutput) {
  const ScriptedTool tool(std::vector{Case("detach", {{{"text", "a"}, {"grandchild_ms", 1500}}}, 3)});
  const ULONGLONG start = GetTickCount64();
  const CmdResult result = tool.Run("detach");
  EXPECT_GE(GetTickCount64() - start, 1400u);
  EXPECT_EQ(result.output, "a");
  EXPECT_EQ(result.exit_code, 3u);
}

TEST(ExecuteCmd, TellsTheDebuggerWhatItDoes) {
  const ScriptedTool tool(std::vector{Case("quick", {}, 5)});
  std::vector<std::wstring> lines;
  ExecuteTraced(tool.Command("quick"), lines);
  EXPECT_EQ(lines, (std::vector<std::wstring>{
                       L"[Varnel Debug] ExecuteCmd starting for: " + tool.Command("quick") + L"\n",
                       L"[Varnel Debug] Calling CreateProcessW...\n",
                       L"[Varnel Debug] CreateProcessW succeeded. Closing write pipe handle...\n",
                       L"[Varnel Debug] Reading stdout pipe loop starting...\n",
                       L"[Varnel Debug] ReadFile loop finished. Waiting for process to terminate...\n",
                       L"[Varnel Debug] Process finished. Getting exit code...\n",
                       L"[Varnel Debug] ExecuteCmd finished. Exit code: 5\n",
                   }));
}

TEST(ExecuteCmd, ReportsWhatCannotBeStartedAndLeavesTheWriteEndOpen) {
  ExecuteCmd(kMissing);
  std::vector<std::wstring> lines;
  const int handles = HandleCount();
  const CmdResult result = ExecuteTraced(kMissing, lines);
  EXPECT_EQ(HandleCount(), handles + 1) << "the pipe's write end, by design";
  EXPECT_FALSE(result.started);
  EXPECT_EQ(result.error, static_cast<uint32_t>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(result.exit_code, 0u);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(lines, (std::vector<std::wstring>{
                       L"[Varnel Debug] ExecuteCmd starting for: varnel-no-such-tool.exe /x\n",
                       L"[Varnel Debug] Calling CreateProcessW...\n",
                       L"[Varnel Debug] CreateProcessW failed. Error code: 2\n",
                   }));
  EXPECT_FALSE(ExecuteCmd(L"").started);
}

TEST(ExecuteCmd, EndsAChildThatRunsOnTenSecondsAfterItsOutput) {
  ScriptedTool tool(
      std::vector{Case("hang", {{{"text", "x"}, {"close_output", true}}, {{"delay_ms", 60'000}}})});
  tool.RunWithoutConsole();
  std::vector<std::wstring> lines;
  const ULONGLONG start = GetTickCount64();
  const CmdResult result = ExecuteTraced(tool.Command("hang"), lines);
  const ULONGLONG took = GetTickCount64() - start;
  EXPECT_GE(took, 9900u);
  EXPECT_LT(took, 30'000u);
  EXPECT_TRUE(result.started);
  EXPECT_EQ(result.output, "x");
  EXPECT_EQ(result.exit_code, 1u);
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[5], L"[Varnel Debug] Process hung! Terminating process...\n");
  EXPECT_EQ(lines[6], L"[Varnel Debug] ExecuteCmd finished. Exit code: 1\n");
}

TEST(ExecuteCmd, KeepsConcurrentRunsApart) {
  std::vector<json> cases;
  for (int i = 0; i < 4; ++i)
    cases.push_back(Case("run" + std::to_string(i),
                         {{{"text", std::string(1, static_cast<char>('a' + i))}, {"repeat", 5000}}}, i));
  const ScriptedTool tool(cases);
  std::vector<std::future<CmdResult>> runs;
  for (int i = 0; i < 4; ++i)
    runs.push_back(
        std::async(std::launch::async, [&tool, i] { return tool.Run("run" + std::to_string(i)); }));
  for (int i = 0; i < 4; ++i) {
    const CmdResult result = runs[static_cast<size_t>(i)].get();
    EXPECT_EQ(result.output, std::string(5000, static_cast<char>('a' + i)));
    EXPECT_EQ(result.exit_code, static_cast<uint32_t>(i));
  }
}

// 100 rounds, not the 1,000 of others: starting a process takes tens of milliseconds under Wine.
TEST(ExecuteCmd, LeavesNoHandlesBehindInAHundredRounds) {
  constexpr int kRounds = 100;
  ScriptedTool tool(std::vector{Case("leak", {{{"text", "x"}}})});
  tool.RunWithoutConsole();
  tool.Run("leak");
  const int before = HandleCount();
  for (int i = 0; i < kRounds; ++i) ASSERT_EQ(tool.Run("leak").output, "x");
  EXPECT_EQ(HandleCount(), before);
}

TEST(TerminateProcessById, EndsARunningProcessWithCodeZero) {
  const ScriptedTool tool(std::vector{Case("sleep", {{{"delay_ms", 60'000}}}, 9)});
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  std::wstring command = tool.Command("sleep");
  ASSERT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                             nullptr, &startup, &started));
  const KernelHandle process(started.hProcess);
  CloseHandle(started.hThread);

  EXPECT_TRUE(TerminateProcessById(started.dwProcessId));
  ASSERT_EQ(WaitForSingleObject(process.get(), 10'000), WAIT_OBJECT_0);
  DWORD exit_code = 1;
  GetExitCodeProcess(process.get(), &exit_code);
  EXPECT_EQ(exit_code, 0u);
  EXPECT_FALSE(TerminateProcessById(0xFFFFFFFC)) << "nobody's";
  EXPECT_FALSE(TerminateProcessById(0)) << "the system's idle process";
}
