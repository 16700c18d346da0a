#include "app/actions_win.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/dispatcher.h"
#include "base/exe_directory_win.h"
#include "base/text.h"
#include "testing/message_box_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

using Replies = std::vector<std::string>;

Replies Dispatch(std::wstring_view message) {
  TakePostedTexts();
  ActionDispatcher(Actions()).Dispatch(message);
  return TakePostedTexts();
}

// The program's settings.json in this build, which is nobody's, is gone before and after.
struct SettingsFile {
  SettingsFile() { std::filesystem::remove(path); }
  ~SettingsFile() { std::filesystem::remove(path); }
  std::string Read() const {
    std::ifstream stream(path, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(stream), {}};
  }
  const std::filesystem::path path = GetExeDirectory() + L"\\..\\settings.json";
};

}  // namespace

TEST(Actions, StandInTheFixedOrder) {
  std::string names;
  for (const Action& action : Actions()) names += std::string(action.name) + " ";
  EXPECT_EQ(names,
            "exitApp testBridge openUrl openMailto getCPU uninstallAppSuite getOpenPorts getEnvVariables "
            "saveEnvVariable getHostsFile saveHostsFile getDevServices controlDevService runPingDiagnostic "
            "getStatus getTelemetry debugSystem getSettings saveSettings reboot getPnpDevices getProcesses "
            "killProcess getJunk cleanJunk getSystemFilesAdvisor setHibernation getDownloadsJunk "
            "deleteSpecificFiles getStartupItems toggleStartupItem toggleScheduleClean getSoftwareUpdates "
            "getDriverUpdates checkForUpdates downloadAndApplyUpdate startSystemScan getInstalledApps "
            "uninstallApp findLeftovers cleanLeftovers startDiskAnalysis getFolderContents installSoftware "
            "installDriver quickAction ");
}

// Of several missing fields one is named. Nothing is started, ended, written or deleted: the reply would be
// another or a second one.
TEST(Actions, RefuseARequestWithoutARequiredField) {
  const struct {
    std::wstring_view action;
    const char* missing;  // type of the field
  } cases[] = {
      {L"saveEnvVariable", "string"},   {L"saveHostsFile", "string"},
      {L"controlDevService", "string"}, {L"runPingDiagnostic", "string"},
      {L"killProcess", "number"},       {L"deleteSpecificFiles", "array"},
      {L"toggleStartupItem", "string"}, {L"toggleScheduleClean", "boolean"},
      {L"uninstallApp", "string"},      {L"findLeftovers", "string"},
      {L"cleanLeftovers", "array"},     {L"startDiskAnalysis", "string"},
      {L"getFolderContents", "string"}, {L"installSoftware", "string"},
      {L"installDriver", "string"},     {L"quickAction", "string"},
  };
  for (const auto& c : cases) {
    const std::wstring request =
        LR"({"action":")" + std::wstring(c.action) + LR"(","requestId":3,"data":{}})";
    EXPECT_EQ(Dispatch(request), Replies{R"({"message":"[json.exception.type_error.302] type must be )" +
                                         std::string(c.missing) + R"(, but is null","type":"error"})"})
        << WideToUtf8(c.action);
  }
  EXPECT_EQ(WaitForMessages(1, 300).size(), 0u) << "from a worker";
}

TEST(Actions, AnswerSmallRequestsExactly) {
  const std::pair<const wchar_t*, Replies> cases[] = {
      {LR"({"action":"openMailto","requestId":5,"data":{"url":"mailto:a@b.c"}})",
       {R"({"requestId":5,"success":true,"type":"openMailto"})"}},
      {LR"({"action":"openUrl","url":""})", {R"({"requestId":0,"success":true,"type":"openUrl"})"}},
      {LR"({"action":"openUrl","requestId":6,"url":1})",
       {R"({"message":"[json.exception.type_error.302] type must be string, but is number","type":"error"})"}},
      {LR"({"action":"quickAction","requestId":3,"data":{"type":"other"}})", {}},
      {LR"({"action":"exitApp","requestId":1})", {}},
  };
  for (const auto& [request, want] : cases) EXPECT_EQ(Dispatch(request), want) << WideToUtf8(request);
  EXPECT_EQ(WaitForMessages(1, 300).size(), 0u) << "from a worker";
  bool quit = false;
  for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
    quit = quit || message.message == WM_QUIT;
  EXPECT_TRUE(quit);
}

TEST(Actions, KeepSettingsBesideTheExecutablesFolder) {
  const SettingsFile file;
  EXPECT_EQ(Dispatch(LR"({"action":"getSettings","requestId":18})"), Replies{RecordedMessage("settings")});
  EXPECT_EQ(
      Dispatch(LR"({"action":"saveSettings","requestId":19,"data":{"theme":"amethyst","language":"cs"}})"),
      Replies{RecordedMessage("saveSettings")});
  EXPECT_EQ(file.Read(), "{\n    \"language\": \"cs\",\n    \"theme\": \"amethyst\"\n}");
  EXPECT_EQ(Dispatch(LR"({"action":"saveSettings"})"),
            Replies{R"({"requestId":0,"settings":null,"success":true,"type":"saveSettings"})"});
  EXPECT_EQ(file.Read(), "null");
  EXPECT_EQ(Dispatch(LR"({"action":"getSettings"})"),
            Replies{R"({"requestId":0,"settings":null,"success":true,"type":"settings"})"});

  // Written with its quadratic indentation, read back and replied.
  for (const auto& [open, close] : {std::pair{L"[", L"]"}, std::pair{L"{\"a\":", L"}"}}) {
    std::wstring request = LR"({"action":"saveSettings","data":)";
    for (int i = 0; i < 3'000; ++i) request += open;
    request += L'1';
    for (int i = 0; i < 3'000; ++i) request += close;
    EXPECT_TRUE(Dispatch(request + L"}").at(0).ends_with(R"(,"success":true,"type":"saveSettings"})"));
    EXPECT_TRUE(Dispatch(LR"({"action":"getSettings"})").at(0).size() > 6'000);
  }
}

TEST(Actions, DebugSystemWritesItsLinesThenReplies) {
  const Replies replies = Dispatch(LR"({"action":"debugSystem","requestId":4})");
  ASSERT_GT(replies.size(), 9u);
  EXPECT_EQ(replies.front(), RecordedMessage("console_log"));
  for (size_t i = 0; i + 1 < replies.size(); ++i)
    EXPECT_TRUE(replies[i].ends_with(R"("style":"system-line","type":"console_log"})")) << replies[i];
  EXPECT_TRUE(replies[1].starts_with(R"({"message":"[DebugSpecs] CPU: )")) << replies[1];
  EXPECT_TRUE(replies[6].starts_with(R"({"message":"[DebugTelemetry] CPU Load: )")) << replies[6];
  EXPECT_EQ(replies.back(), R"({"requestId":4,"success":true,"type":"debugSystem"})");

  // The processor is the same one.
  const auto cpu = nlohmann::json::parse(Dispatch(LR"({"action":"getCPU","requestId":3})").at(0));
  EXPECT_EQ(cpu["type"], "cpu_info");
  EXPECT_EQ(cpu["requestId"], 3);
  EXPECT_NE(replies[1].find("CPU: " + cpu["cpu"].get<std::string>() + "\""), std::string::npos);
}

TEST(Actions, UninstallSaysThatTheInstallerIsMissing) {
  MessageBoxCloser box(L"Chyba odinstalace");
  EXPECT_TRUE(Dispatch(LR"({"action":"uninstallAppSuite","requestId":1})").empty());
  EXPECT_EQ(box.Text(), L"Chyba: Soubor VarnelSetup.exe nebyl nalezen v instalačním adresáři.");
}
