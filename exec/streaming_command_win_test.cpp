#include "exec/streaming_command_win.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/temp_folder_win.h"

namespace {

using nlohmann::json;

struct Stream {
  std::vector<std::string> lines;
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

Stream StreamOf(const std::wstring& command) {
  TakePostedTexts();
  RunStreamingCommand(command, 7);
  return Take();
}

using Lines = std::vector<std::string>;

}  // namespace

TEST(RunStreamingCommand, PostsLinesOfBothStreamsThenTheExitCode) {
  const Stream stream = StreamOf(L"echo a&echo.&echo e>&2&echo b&exit 3");
  EXPECT_EQ(stream.lines, (Lines{"a", "e", "b"}));
  EXPECT_EQ(stream.exit, (json{{"type", "ping_diagnostic_stream"}, {"streamType", "exit"}, {"code", 3}}));
}

TEST(RunStreamingCommand, LosesNoLineOverManyReads) {
  const Stream stream = StreamOf(L"for /L %i in (1,1,600) do @echo line %i of many");
  ASSERT_EQ(stream.lines.size(), 600u);
  for (size_t i = 0; i < 600; ++i) EXPECT_EQ(stream.lines[i], "line " + std::to_string(i + 1) + " of many");
}

TEST(RunStreamingCommand, TakesWhateverBytesAToolPrints) {
  const TempFolder folder;
  std::ofstream(std::filesystem::path(folder.path) / "out.txt", std::ios::binary)
      << "Odpov\xD8\xD4 od\n"
      << "P\xC5\x99\xC3\xADkaz\r\n"
      << std::string("x\0lost\n", 7);
  const Stream stream = StreamOf(L"type \"" + folder.path + L"\\out.txt\"");
  ASSERT_EQ(stream.lines.size(), 2u) << "what follows a zero byte in a read is dropped";
  EXPECT_TRUE(stream.lines[0].starts_with("Odpov") && stream.lines[0].ends_with(" od"));
  EXPECT_EQ(stream.lines[1], "Příkaz");
}

TEST(RunStreamingCommand, PostsALineAtOnce) {
  TakePostedTexts();
  const ULONGLONG start = GetTickCount64();
  std::thread run([] { RunStreamingCommand(L"echo first&ping -n 4 127.0.0.1 >nul&echo second", 7); });
  const std::vector<json> first = WaitForMessages(1, 30'000);
  const ULONGLONG first_ms = GetTickCount64() - start;
  run.join();
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(first[0]["message"], "first");
  EXPECT_GT(GetTickCount64() - start, first_ms + 500) << "the command was still running";
  EXPECT_EQ(Take().lines, Lines{"second"});
}

// The current folder comes before the system's, so a file there that is no program stands in for a broken
// interpreter.
TEST(RunStreamingCommand, ReportsAFailedStart) {
  const TempFolder folder;
  const auto start_folder = std::filesystem::current_path();
  PutFile(std::filesystem::path(folder.path) / "cmd.exe", 100);
  std::filesystem::current_path(folder.path);
  TakePostedTexts();
  RunStreamingCommand(L"echo x", 7);
  std::filesystem::current_path(start_folder);
  EXPECT_EQ(TakePostedTexts(), std::vector{RecordedMessage("ping_diagnostic_stream.failed")});
}

TEST(RunPingDiagnostic, PingsThisMachine) {
  TakePostedTexts();
  runPingDiagnostic(7, "ping", "127.0.0.1");
  const Stream stream = Take();
  EXPECT_GE(stream.lines.size(), 5u) << "a heading and four replies";
  int replies = 0;
  for (const std::string& line : stream.lines) replies += line.find("127.0.0.1") != std::string::npos;
  EXPECT_GE(replies, 4);
  EXPECT_EQ(stream.exit["code"], 0);
}
