#include "testing/stand_ins/pipe_server_win.h"

#include <gtest/gtest.h>

namespace {

// Opens the pipe, sends `request`, reads to the end; the reading side of every client.
std::string Exchange(const std::string& request) {
  const Owned<FileHandleKind> pipe(CreateFileW(L"\\\\.\\pipe\\VarnelServicePipe",
                                               GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                                               nullptr));
  EXPECT_TRUE(pipe) << GetLastError();
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(pipe.get(), request.data(), static_cast<DWORD>(request.size()), &count, nullptr));
  std::string reply;
  char bytes[4096];
  while (ReadFile(pipe.get(), bytes, sizeof bytes, &count, nullptr) && count > 0) reply.append(bytes, count);
  return reply;
}

// Other tests rely on these, so a fault here would show as a fault of the client.
TEST(StandInService, AnswersByActionAndKeepsEveryRequest) {
  const std::string long_text(3'000'000, 'x');
  StandInService service(
      {{"reply", Reply({{"success", true}})},
       {"cut", RawReply("{\"succ")},
       {"silent", {}},
       {"long", RawReply(long_text)},
       {"stream", Stream({{{"type", "stdout"}, {"message", "a"}}, {{"type", "exit"}, {"code", 3}}})}});
  EXPECT_EQ(Exchange("{\"action\":\"reply\",\"data\":{}}\n"), "{\"success\":true}\n");
  EXPECT_EQ(Exchange("{\"action\":\"cut\"}\n"), "{\"succ");
  EXPECT_EQ(Exchange("{\"action\":\"silent\"}\n"), "");
  EXPECT_EQ(Exchange("{\"action\":\"long\"}\n"), long_text);
  EXPECT_EQ(Exchange("{\"action\":\"stream\"}\n"),
            "{\"message\":\"a\",\"type\":\"stdout\"}\n{\"code\":3,\"type\":\"exit\"}\n");
  EXPECT_EQ(Exchange("{\"action\":\"other\"}\n"), "{\"error\":\"Unknown action\",\"success\":false}\n");
  EXPECT_EQ(service.connections(), 6);
  ASSERT_EQ(service.requests().size(), 6u);
  EXPECT_EQ(service.requests()[0], "{\"action\":\"reply\",\"data\":{}}\n");
}

TEST(StandInService, BusyPipeRefusesWithPipeBusy) {
  const BusyStandInService busy;
  const HANDLE pipe = CreateFileW(L"\\\\.\\pipe\\VarnelServicePipe", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  const DWORD error = GetLastError();
  EXPECT_EQ(pipe, INVALID_HANDLE_VALUE);
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_PIPE_BUSY));
}

TEST(StandInService, ScriptGivesBytesDelaysAndHold) {
  const ServiceAnswer answer = AnswerFromScript(
      {{"chunks",
        {{{"text", "ab"}, {"repeat", 2}}, {{"hex", "ff0a"}, {"delay_ms", 20}}, {{"reply", {{"k", 1}}}}}},
       {"hold_open", true}});
  ASSERT_EQ(answer.chunks.size(), 3u);
  EXPECT_EQ(answer.chunks[0].bytes, "abab");
  EXPECT_EQ(answer.chunks[1].bytes, "\xff\n");
  EXPECT_EQ(answer.chunks[1].delay_ms, 20);
  EXPECT_EQ(answer.chunks[2].bytes, "{\"k\":1}\n");
  EXPECT_TRUE(answer.hold_open);
}

}  // namespace
