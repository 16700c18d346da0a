#include "net/network_tools.h"

#include <windows.h>

#include <thread>

#include <gtest/gtest.h>

#include "testing/handle_count_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/tool_copy_win.h"

namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;

struct Stream {
  Lines lines;
  json exit;
};

// Checks what every stream has: lines with the request's id, then one closing message without it.
Stream Take() {
  Stream stream;
  for (const json& message : TakePostedMessages()) {
    EXPECT_EQ(message["type"], "ping_diagnostic_stream");
    EXPECT_TRUE(stream.exit.is_null()) << "nothing follows the exit message";
    if (message["streamType"] == "stdout") {
      EXPECT_EQ(message["requestId"], 7);
      stream.lines.push_back(message["message"]);
    } else {
      EXPECT_FALSE(message.contains("requestId"));
      stream.exit = message;
    }
  }
  EXPECT_TRUE(stream.exit.is_object());
  return stream;
}

// What the command prints after a look-up of which nothing is seen.
Stream StreamOf(const std::string& command) {
  TakePostedTexts();
  runPingDiagnostic(7, "dns", ">nul 2>nul&" + command);
  return Take();
}

}  // namespace

TEST(RunPingDiagnostic, PostsLinesOfBothStreamsThenTheExitCode) {
  StreamOf("echo x");
  const int handles = HandleCount();
  const Stream stream = StreamOf("echo a&echo.&echo e>&2&echo b&exit 3");
  EXPECT_EQ(HandleCount(), handles);
  EXPECT_EQ(stream.lines, (Lines{"a", "e", "b"}));
  EXPECT_EQ(stream.exit, (json{{"type", "ping_diagnostic_stream"}, {"streamType", "exit"}, {"code", 3}}));
}

// The tools stand in for the command interpreter, so that their writes are the reads.
TEST(RunPingDiagnostic, CutsLinesOutOfWhateverAToolPrints) {
  std::string zero_in_long(3000, 'x');
  zero_in_long[100] = '\0';
  std::string many;
  for (int i = 0; i < 600; ++i) many += "line of many\r\n";
  const struct {
    const char* name;
    std::vector<json> writes;
    Lines want;
  } cases[] = {
      {"a character and a line end over several reads",
       {WriteStep("P\xC5"), WriteStep("\x99\xC3\xADkaz\r", 60), WriteStep("\nb\n", 60)},
       {"Příkaz", "b"}},
      {"many reads", {WriteStep(many)}, Lines(600, "line of many")},
      {"what follows a zero byte in a read of 1023 bytes is lost",
       {WriteStep(zero_in_long + "\n")},
       {std::string(100 + 3000 - 1023, 'x')}},
      {"an unfinished line", {WriteStep("a\r\nb\r")}, {"a"}},
  };
  for (const auto& c : cases) {
    const ToolCopy interpreter(L"cmd", {{"steps", c.writes}});
    EXPECT_EQ(StreamOf("x").lines, c.want) << c.name;
  }
  const ToolCopy interpreter(L"cmd", {{"steps", {WriteStep("Odpov\xD8\xD4 od\n")}}});
  const Lines lines = StreamOf("x").lines;
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].starts_with("Odpov") && lines[0].ends_with(" od")) << "another code page";
}

TEST(RunPingDiagnostic, PostsALineAtOnce) {
  const ToolCopy interpreter(L"cmd", {{"steps", {WriteStep("first\n"), WriteStep("second\n", 2000)}}});
  TakePostedTexts();
  std::thread run([] { runPingDiagnostic(7, "ping", "x"); });
  const std::vector<json> first = WaitForMessages(1, 30'000);
  const ULONGLONG first_ms = GetTickCount64();
  run.join();
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(first[0]["message"], "first");
  EXPECT_GT(GetTickCount64() - first_ms, 500u) << "the command was still running";
  EXPECT_EQ(Take().lines, Lines{"second"});
}

TEST(RunPingDiagnostic, DoesNotWaitForWhatHasClosedItsOutput) {
  const ToolCopy interpreter(L"cmd",
                             {{"steps", {{{"text", "a\n"}, {"close_output", true}}, {{"delay_ms", 1000}}}}});
  interpreter.BecomeWindowed();
  const Stream stream = StreamOf("x");
  EXPECT_EQ(stream.lines, Lines{"a"});
  EXPECT_EQ(stream.exit["code"], STILL_ACTIVE);
}

TEST(RunPingDiagnostic, ReportsAFailedStart) {
  const ToolCopy broken(L"cmd", nullptr);
  const std::string failed = RecordedMessage("ping_diagnostic_stream.failed");
  TakePostedTexts();
  runPingDiagnostic(7, "ping", "x");
  EXPECT_EQ(TakePostedTexts(), std::vector{failed});
  const int handles = HandleCount();
  runPingDiagnostic(7, "ping", "x");
  EXPECT_EQ(HandleCount(), handles);
}

TEST(RunPingDiagnostic, HandsTheTargetToTheInterpreterAsItStands) {
  const ToolCopy interpreter(L"cmd", {{"steps", {WriteStep("a\n")}}});
  TakePostedTexts();
  runPingDiagnostic(7, "ping", "127.0.0.1 & \"žluť\"");
  EXPECT_EQ(Take().lines, Lines{"a"});
  runPingDiagnostic(7, "dns", "brod.example");
  EXPECT_EQ(interpreter.CommandLines(),
            (Lines{"cmd.exe /c ping -n 4 127.0.0.1 & \"žluť\"", "cmd.exe /c nslookup brod.example"}));
}
