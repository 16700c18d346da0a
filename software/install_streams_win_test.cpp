#include "software/install_streams_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/text.h"
#include "base/utf8.h"
#include "software/driver_scripts_win.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/pipe_server_win.h"
#include "testing/stand_ins/tool_copy_win.h"

using nlohmann::json;
using testing::ElementsAre;

namespace {

std::string Status(const char* type, const std::string& message) {
  return json{{"type", type}, {"streamType", "status"}, {"requestId", 0}, {"message", message}}.dump();
}
std::string Output(const std::string& message, bool is_progress) {
  return json{{"type", "update_stream"},
              {"streamType", "stdout"},
              {"requestId", 0},
              {"message", message},
              {"isProgress", is_progress}}
      .dump();
}
std::string Exit(int64_t code, bool reboot_required) {
  return json{{"type", "update_stream"},
              {"streamType", "exit"},
              {"requestId", 0},
              {"code", code},
              {"rebootRequired", reboot_required}}
      .dump();
}

const std::string kInstalling =
    Status("update_stream", "Inicializuji instalaci pro balíček: Brook.TarnSync...");
const std::string kRemoving =
    Status("uninstall_stream", "Inicializuji odinstalaci balíčku Brook.TarnSync...");
const std::string kDriver =
    Status("update_stream", "Spouštím instalaci ovladače přes Windows Update: Peat - System...");
const std::string kNoService = R"({"type":"show_service_error_modal"})";

// The same output for both line rules: a redraw whose CR LF is torn apart, blanks, an unfinished last line.
const json kToolScript = {{"steps",
                           {{{"text", "first\rsecond\r"}},
                            {{"text", "\n \tthird \n\n   \r\n"}, {"delay_ms", 150}},
                            {{"text", "on stderr\n"}, {"stderr", true}, {"delay_ms", 150}},
                            {{"text", "unfinished"}, {"delay_ms", 150}}}},
                          {"exit", 0x8A15002Bu}};

}  // namespace

TEST(InstallSoftware, StreamsLinesAndPassesTheExitCodeOn) {
  const ToolCopy winget(L"winget", kToolScript);
  installSoftware(0, "Brook.TarnSync");
  EXPECT_THAT(TakePostedTexts(),
              ElementsAre(kInstalling, Output("first", true), Output("second", true), Output("third", false),
                          Output("on stderr", false), Exit(2316632107, false)));
  EXPECT_THAT(winget.CommandLines(),
              ElementsAre("winget upgrade --id \"Brook.TarnSync\" --silent --accept-package-agreements "
                          "--accept-source-agreements --disable-interactivity"));
}

TEST(UninstallApp, CutsAtLineFeedsOnly) {
  const ToolCopy winget(L"winget", kToolScript);
  uninstallApp(0, "Brook.TarnSync");
  const auto line = [](const char* message) {
    return json{
        {"type", "uninstall_stream"}, {"streamType", "stdout"}, {"requestId", 0}, {"message", message}}
        .dump();
  };
  EXPECT_THAT(
      TakePostedTexts(),
      ElementsAre(kRemoving, line("first\rsecond"), line(" \tthird "), line("   "), line("on stderr"),
                  R"({"code":2316632107,"requestId":0,"streamType":"exit","type":"uninstall_stream"})"));
  EXPECT_THAT(winget.CommandLines(),
              ElementsAre("winget uninstall --id \"Brook.TarnSync\" --silent --accept-source-agreements "
                          "--disable-interactivity"));
}

TEST(Streams, RefuseArgumentsThatAreSyntax) {
  const ToolCopy winget(L"winget", kToolScript);
  installSoftware(9, "a\" & calc \"");
  installDriver(9, "Meadow, Inc.");
  uninstallApp(9, "Poznámky");
  const char* refused =
      R"({"code":999,"rebootRequired":false,"requestId":9,"streamType":"exit","type":"update_stream"})";
  EXPECT_THAT(TakePostedTexts(),
              ElementsAre(refused, refused,
                          R"({"code":999,"requestId":9,"streamType":"exit","type":"uninstall_stream"})"));
  EXPECT_TRUE(winget.CommandLines().empty());
}

TEST(Streams, EndWithOneWhenTheToolCannotStart) {
  const ToolCopy powershell(L"powershell", nullptr);
  installSoftware(0, "Brook.TarnSync");
  uninstallApp(0, "Brook.TarnSync");
  installDriver(0, "Peat - System");
  EXPECT_THAT(TakePostedTexts(),
              ElementsAre(kInstalling, Exit(1, false), kRemoving,
                          R"({"code":1,"requestId":0,"streamType":"exit","type":"uninstall_stream"})",
                          kDriver, kNoService, Exit(1, false)));
}

TEST(Streams, AnEmptyIdentifierIsAccepted) {
  const ToolCopy winget(L"winget", {{"exit", 0}});
  installSoftware(0, "");
  EXPECT_THAT(
      TakePostedTexts(),
      ElementsAre(Status("update_stream", "Inicializuji instalaci pro balíček: ..."), Exit(0, false)));
  EXPECT_THAT(winget.CommandLines(), ElementsAre(testing::HasSubstr("upgrade --id \"\" --silent")));
}

TEST(Streams, WaitForAToolThatHasClosedItsOutput) {
  const ToolCopy winget(
      L"winget",
      {{"steps", {{{"text", "Bye\n"}, {"close_output", true}}, {{"delay_ms", 400}}}}, {"exit", 7}});
  winget.BecomeWindowed();
  installSoftware(0, "Brook.TarnSync");
  EXPECT_THAT(TakePostedTexts(), ElementsAre(kInstalling, Output("Bye", false), Exit(7, false)))
      << "259 is the code of a process that still runs";
}

TEST(Streams, SurviveEveryByte) {
  std::string lines;
  for (int value = 0; value < 256; ++value) lines += {static_cast<char>(value), '\n'};
  const ToolCopy winget(L"winget", {{"steps", {WriteStep(lines + std::string(5000, 'x') + "\n")}}});
  for (const auto& run : {installSoftware, uninstallApp}) {
    run(0, "Brook.TarnSync");
    const auto messages = TakePostedMessages();  // parses each, so each is UTF-8
    ASSERT_GT(messages.size(), 200u);
    EXPECT_EQ(messages[messages.size() - 2]["message"], std::string(5000, 'x'))
        << "a line of several chunks stays one";
    EXPECT_EQ(messages.back()["code"], 0);
  }
}

TEST(InstallDriver, RunsTheScriptWhenTheServiceIsAway) {
  const ToolCopy powershell(
      L"powershell",
      {{"steps", json::array({{{"text", "Installing\r\nDone: SYSTEM_REBOOT_REQUIRED now\r\nBye\r\n"}}})},
       {"exit", 0}});
  installDriver(0, "Peat - System");
  EXPECT_THAT(TakePostedTexts(), ElementsAre(kDriver, kNoService, Output("Installing", true),
                                             Output("Done: SYSTEM_REBOOT_REQUIRED now", true),
                                             Output("Bye", true), Exit(0, true)));
  EXPECT_THAT(
      powershell.CommandLines(),
      ElementsAre("powershell -NoProfile -ExecutionPolicy Bypass -File \"" + WideToUtf8(GetExeDirectory()) +
                  "\\update_driver.ps1\" -UpdateTitle \"Peat - System\""));
}

TEST(InstallDriver, ForwardsTheServicesRecords) {
  const struct {
    const char* name;
    ServiceAnswer answer;
    std::vector<std::string> want;
  } cases[] = {
      {"plain",
       Stream(
           {{{"type", "stdout"}, {"message", " a "}}, {{"type", "note"}}, {{"type", "exit"}, {"code", 3}}}),
       {Output(" a ", false), Exit(3, false)}},
      {"a false flag does not clear the marker",
       Stream({{{"type", "stdout"}, {"message", "x SYSTEM_REBOOT_REQUIRED"}},
               {{"type", "exit"}, {"code", 0}, {"rebootRequired", false}}}),
       {Output("x SYSTEM_REBOOT_REQUIRED", false), Exit(0, true)}},
      {"the flag alone",
       Stream({{{"type", "exit"}, {"code", 0}, {"rebootRequired", true}}}),
       {Exit(0, true)}},
      {"a line that is no JSON is ignored",
       RawReply("oops\xFF\n{\"type\":\"exit\",\"code\":4}\n"),
       {Exit(4, false)}},
      {"closed before its exit record",
       Stream({{{"type", "stdout"}, {"message", "a"}}}),
       {Output("a", false)}},
      {"closed at once", {}, {}},
  };
  for (const auto& c : cases) {
    StandInService service({{"installDriver", c.answer}});
    installDriver(0, "Peat - System");
    auto texts = TakePostedTexts();
    ASSERT_FALSE(texts.empty()) << c.name;
    EXPECT_EQ(texts.front(), kDriver) << c.name;
    texts.erase(texts.begin());
    EXPECT_EQ(texts, c.want) << c.name;
    const json request = {{"action", "installDriver"},
                          {"data",
                           {{"scriptPath", WideToUtf8(GetExeDirectory()) + "\\update_driver.ps1"},
                            {"title", "Peat - System"}}}};
    EXPECT_THAT(service.requests(), ElementsAre(request.dump() + "\n")) << c.name;
  }
}
