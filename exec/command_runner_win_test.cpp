#include "exec/command_runner_win.h"

#include <future>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "exec/hidden_process_win.h"
#include "testing/debug_output_win.h"
#include "testing/handle_count_win.h"
#include "testing/stand_ins/tool_copy_win.h"

namespace {

using nlohmann::json;

constexpr const wchar_t* kTool = L"varnel_test_tool";
constexpr const wchar_t* kMissing = L"varnel-no-such-tool.exe /x";

// Runs a command and collects what was written to the debugger meanwhile.
CmdResult ExecuteTraced(const std::wstring& command, std::vector<std::wstring>& lines) {
  const DebugOutput output;
  CmdResult result = ExecuteCmd(command);
  lines = DebugOutput::TakeLines();
  return result;
}

}  // namespace

// All at the same time, so that none may get what another prints.
TEST(ExecuteCmd, CollectsOutputAndExitCode) {
  std::string zero_in_long(10'000, 'A');
  zero_in_long[100] = '\0';
  const std::string long_line(200'000, 'x');
  const struct {
    const char* argument;
    std::vector<json> steps;
    uint32_t exit_code;
    std::string output;
  } cases[] = {
      {"plain", {WriteStep("line\r\n")}, 7, "line\r\n"},
      {"silent", {}, 0xFFFFFFFF, ""},
      {"both",
       {{{"text", "a"}},
        {{"text", "b"}, {"stderr", true}},
        {{"text", "c"}},
        {{"text", "d"}, {"stderr", true}}},
       0,
       "abcd"},
      {"bytes", {WriteStep("P\xFD\xA1kaz\r\n")}, 0, "P\xFD\xA1kaz\r\n"},
      {"long", {WriteStep(long_line)}, 1, long_line},
      {"zero in a chunk", {WriteStep(std::string("ab\0cde", 6)), WriteStep("fg", 200)}, 0, "abfg"},
      {"zero in chunks of 4095", {WriteStep(zero_in_long)}, 0, std::string(100 + 10'000 - 4095, 'A')},
  };
  std::vector<json> script;
  for (const auto& c : cases)
    script.push_back({{"when", c.argument}, {"steps", c.steps}, {"exit", c.exit_code}});
  const ToolCopy tool(kTool, {{"cases", script}, {"exit", 252}});
  std::vector<std::future<CmdResult>> runs;
  for (const auto& c : cases)
    runs.push_back(
        std::async(std::launch::async, [&c] { return ExecuteCmd(kTool + (L" " + Utf8ToWide(c.argument))); }));
  for (size_t i = 0; i < runs.size(); ++i) {
    const CmdResult result = runs[i].get();
    EXPECT_TRUE(result.started) << cases[i].argument;
    EXPECT_EQ(result.error, 0u) << cases[i].argument;
    EXPECT_EQ(result.exit_code, cases[i].exit_code) << cases[i].argument;
    EXPECT_TRUE(result.output == cases[i].output)
        << cases[i].argument << ": " << result.output.substr(0, 100);
  }
}

TEST(ExecuteCmd, WaitsForAGrandchildThatHoldsTheOutput) {
  const ToolCopy tool(kTool, {{"steps", {{{"text", "a"}, {"grandchild_ms", 1500}}}}, {"exit", 3}});
  const ULONGLONG start = GetTickCount64();
  const CmdResult result = ExecuteCmd(kTool);
  EXPECT_GE(GetTickCount64() - start, 1400u);
  EXPECT_EQ(result.output, "a");
  EXPECT_EQ(result.exit_code, 3u);
}

TEST(ExecuteCmd, TellsTheDebuggerWhatItDoes) {
  const ToolCopy tool(kTool, {{"exit", 5}});
  std::vector<std::wstring> lines;
  ExecuteTraced(kTool, lines);
  EXPECT_EQ(lines, (std::vector<std::wstring>{
                       L"[Varnel Debug] ExecuteCmd starting for: varnel_test_tool\n",
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
  const ToolCopy tool(kTool, {{"steps", {{{"text", "x"}, {"close_output", true}}, {{"delay_ms", 60'000}}}}});
  tool.BecomeWindowed();
  std::vector<std::wstring> lines;
  const ULONGLONG start = GetTickCount64();
  const CmdResult result = ExecuteTraced(kTool, lines);
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

TEST(OutputPipe, OnlyItsWriteEndIsInherited) {
  const std::optional<OutputPipe> pipe = CreateOutputPipe();
  ASSERT_TRUE(pipe);
  DWORD read = 0, write = 0;
  GetHandleInformation(pipe->read.get(), &read);
  GetHandleInformation(pipe->write.get(), &write);
  EXPECT_EQ(read & HANDLE_FLAG_INHERIT, 0u);
  EXPECT_EQ(write & HANDLE_FLAG_INHERIT, DWORD{HANDLE_FLAG_INHERIT});
}

// 100 rounds, not the 1,000 of others: starting a process takes tens of milliseconds under Wine.
TEST(ExecuteCmd, LeavesNoHandlesBehindInAHundredRounds) {
  constexpr int kRounds = 100;
  const ToolCopy tool(kTool, {{"steps", {WriteStep("x")}}});
  tool.BecomeWindowed();
  ExecuteCmd(kTool);
  const int before = HandleCount();
  for (int i = 0; i < kRounds; ++i) ASSERT_EQ(ExecuteCmd(kTool).output, "x");
  EXPECT_EQ(HandleCount(), before);
}
