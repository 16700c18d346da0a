#include "exec/service_pipe_win.h"

#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/handle_win.h"
#include "exec/service_protocol.h"
#include "testing/handle_count_win.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/pipe_server_win.h"

namespace {

using nlohmann::json;

// Runs `body` and gives the milliseconds that it took.
template <typename Body>
ULONGLONG Took(Body body) {
  const ULONGLONG start = GetTickCount64();
  body();
  return GetTickCount64() - start;
}

const json kNotRunning = {{"error", "Service not running"}, {"success", false}};

}  // namespace

TEST(Service, IsGivenUpInTimeWhenAbsentOrBusy) {
  const auto probe = [] { EXPECT_FALSE(IsServiceRunning()); };
  const auto request = [] { EXPECT_EQ(SendServiceRequest("getJunkSizes", {}), kNotRunning); };
  const auto session = [] {
    auto fail = [](const std::string&) { ADD_FAILURE() << "there is no output"; };
    EXPECT_FALSE(RunServiceSession("sfcVerify", {}, fail).connected);
  };
  // A little less than the sleeps and waits: they may end a tick early. A little more for a busy machine.
  const auto expect_took = [](ULONGLONG took_ms, ULONGLONG waits_ms) {
    EXPECT_GE(took_ms + took_ms / 20 + 20, waits_ms);
    EXPECT_LT(took_ms, waits_ms + waits_ms / 2 + 1000);
  };
  TakePostedTexts();
  expect_took(Took(probe), 5 * 50);
  expect_took(Took(request), 5 * 100);
  EXPECT_LT(Took(session), 300u) << "once, without waiting";
  EXPECT_TRUE(TakePostedTexts().empty());
  EXPECT_FALSE(EnsureServiceOrNotify());
  EXPECT_EQ(TakePostedTexts(), std::vector<std::string>{R"({"type":"show_service_error_modal"})"});

  const BusyStandInService busy;
  auto busy_probe = std::async(std::launch::async, [&] { return Took(probe); });
  EXPECT_LT(Took(session), 300u) << "once, without waiting";
  expect_took(Took(request), 5 * (1000 + 100));
  expect_took(busy_probe.get(), 5 * 500);
}

TEST(ServiceProbe, FindsAServiceWithoutAskingIt) {
  TakePostedTexts();
  const StandInService service({});
  EXPECT_TRUE(IsServiceRunning());
  EXPECT_TRUE(EnsureServiceOrNotify());
  EXPECT_TRUE(TakePostedTexts().empty());
  EXPECT_TRUE(service.requests().empty());
}

TEST(SendServiceRequest, GetsThroughWhenABusyServiceBecomesFree) {
  const StandInService service({{"slow", {{{"{\"success\":true}\n", 150}}}}}, 1);
  std::vector<std::future<json>> requests;
  for (int i = 0; i < 3; ++i)
    requests.push_back(std::async(std::launch::async, [] { return SendServiceRequest("slow", {}); }));
  for (auto& request : requests) EXPECT_EQ(request.get(), json({{"success", true}}));
}

TEST(SendServiceRequest, ReturnsWhatTheServiceAnswers) {
  const json empty = {{"error", "Empty response"}, {"success", false}};
  const json failed = {{"error", "Parse failed"}, {"success", false}};
  const std::string long_text(10'000, 'x');
  struct {
    const char* name;
    ServiceAnswer answer;
    json want;
  } cases[] = {
      {"object",
       RawReply("{\"success\":true,\"content\":\"Žluť\"}\n"),
       {{"success", true}, {"content", "Žluť"}}},
      {"no object", RawReply("[]\n"), json::array()},
      {"several lines, kept open",
       {{{"{\"success\":true}\n{\"success\":false}\n"}}, true},
       {{"success", true}}},
      {"in pieces", {{{"{\"succ", 0}, {"ess\":tr", 50}, {"ue}\n", 50}}}, {{"success", true}}},
      {"no line feed before the end", RawReply("{\"success\":true}"), {{"success", true}}},
      {"cut", RawReply("{\"success\":tr"), failed},
      {"bare line feed", RawReply("\n"), empty},
      {"closed without an answer", {}, empty},
      {"long", Reply({{"content", long_text}}), {{"content", long_text}}},
  };
  StandInService::Answers answers;
  for (const auto& c : cases) answers[c.name] = c.answer;
  const StandInService service(answers);
  for (const auto& c : cases) EXPECT_TRUE(SendServiceRequest(c.name, json::object()) == c.want) << c.name;
}

TEST(SendServiceRequest, SendsALongRequestWhole) {
  const StandInService service({});
  SendServiceRequest("big", {{"content", std::string(10'000, 'x')}});
  EXPECT_EQ(service.requests(), std::vector<std::string>{"{\"action\":\"big\",\"data\":{\"content\":\"" +
                                                         std::string(10'000, 'x') + "\"}}\n"});
}

TEST(SendServiceRequest, FailsToWriteWhatIsNotUtf8OrToAServiceThatHangsUp) {
  const json write_failed = {{"error", "Write failed"}, {"success", false}};
  {
    const StandInService service({});
    EXPECT_EQ(SendServiceRequest("save_hosts_file", {{"content", "P\xF8"}}), write_failed);
    EXPECT_TRUE(service.requests().empty());
  }
  // A pipe whose buffer cannot hold the request, and a server that closes it unread.
  FileHandle server(CreateNamedPipeW(L"\\\\.\\pipe\\VarnelServicePipe", PIPE_ACCESS_DUPLEX,
                                     PIPE_TYPE_BYTE | PIPE_WAIT, 1, 512, 512, 0, nullptr));
  ASSERT_TRUE(server);
  auto hang_up = std::async(std::launch::async, [&] {
    ConnectNamedPipe(server.get(), nullptr);
    Sleep(100);
    server.reset();
  });
  EXPECT_EQ(SendServiceRequest("save_hosts_file", {{"content", std::string(1'000'000, 'x')}}), write_failed);
}

TEST(SendServiceRequest, LeavesNoHandlesBehind) {
  auto run = [](int rounds) {
    const StandInService service({{"ok", Reply({{"success", true}})}});
    for (int i = 0; i < rounds; ++i) ASSERT_TRUE(ReplySuccess(SendServiceRequest("ok", {})));
  };
  run(5);
  const int before = HandleCount();
  run(1000);
  EXPECT_EQ(HandleCount(), before);
}

TEST(RunServiceSession, HandsOnOutputUntilTheExitRecord) {
  struct {
    const char* name;
    ServiceAnswer answer;
    std::vector<std::string> output;
    std::optional<int64_t> code;
    bool reboot;
  } cases[] = {
      {"whole",
       Stream({{{"type", "stdout"}, {"message", "Žluť 1"}},
               {{"type", "stdout"}, {"message", ""}},
               {{"type", "exit"}, {"code", 3010}, {"rebootRequired", true}}}),
       {"Žluť 1", ""},
       3010,
       true},
      {"skips what is no record",
       RawReply(
           "{\"type\":\"progress\"}\nnoise\n\n{\"type\":\"stdout\",\"message\":\"\xF8\"}\n{\"type\":\"stdout\",\"message\":\"a\"}\r\n{\"code\":0,\"type\":\"exit\"}\n"),
       {"a"},
       0,
       false},
      {"reads nothing after the exit",
       {{{"{\"code\":0,\"type\":\"exit\"}\n{\"type\":\"stdout\",\"message\":\"late\"}\n"}}, true},
       {},
       0,
       false},
      {"breaks before the exit",
       RawReply("{\"type\":\"stdout\",\"message\":\"a\"}\n{\"code\":0,\"type\":\"exit\"}"),
       {"a"},
       {},
       false},
      {"ends at a mistyped record",
       RawReply("{\"type\":\"stdout\",\"message\":\"a\"}\n{\"type\":5}\n{\"code\":0,\"type\":\"exit\"}\n"),
       {"a"},
       {},
       false},
      {"says nothing", {}, {}, {}, false},
  };
  StandInService::Answers answers;
  for (const auto& c : cases) answers[c.name] = c.answer;
  const StandInService service(answers);
  for (const auto& c : cases) {
    std::vector<std::string> output;
    const ServiceSession session =
        RunServiceSession(c.name, {}, [&](const std::string& message) { output.push_back(message); });
    EXPECT_TRUE(session.connected) << c.name;
    EXPECT_EQ(output, c.output) << c.name;
    ASSERT_EQ(session.exit.has_value(), c.code.has_value()) << c.name;
    const ServiceExit exit = session.exit.value_or(ServiceExit{});
    EXPECT_EQ(exit.code, c.code.value_or(0)) << c.name;
    EXPECT_EQ(exit.reboot_required, c.reboot) << c.name;
  }
  EXPECT_EQ(service.requests()[0], "{\"action\":\"whole\",\"data\":{}}\n");
}

TEST(RunServiceSession, ClosesThePipeWhenTheCallbackThrows) {
  const StandInService service({{"sfcVerify", {{{"{\"type\":\"stdout\",\"message\":\"a\"}\n"}}, true}}}, 1);
  EXPECT_THROW(
      RunServiceSession("sfcVerify", {}, [](const std::string&) { throw std::runtime_error("stop"); }),
      std::runtime_error);
  EXPECT_TRUE(IsServiceRunning()) << "its only instance is free again";
}
