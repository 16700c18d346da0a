#include "app/actions_win.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

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

// settings.json of this build, put back as it was.
class SettingsFile {
 public:
  SettingsFile() {
    if (std::filesystem::exists(path_)) kept_ = Read();
    std::filesystem::remove(path_);
  }
  ~SettingsFile() {
    std::filesystem::remove(path_);
    if (kept_) std::ofstream(path_, std::ios::binary) << *kept_;
  }
  std::string Read() const {
    std::ifstream stream(path_, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  const std::filesystem::path path_ = GetExeDirectory() + L"\\..\\settings.json";
  std::optional<std::string> kept_;
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

TEST(Actions, IgnoreAnUnknownRepair) {
  EXPECT_TRUE(Dispatch(LR"({"action":"quickAction","requestId":3,"data":{"type":"other"}})").empty());
  EXPECT_EQ(WaitForMessages(1, 300).size(), 0u) << "from a worker";
}

TEST(Actions, AnswerSmallRequestsExactly) {
  EXPECT_EQ(Dispatch(LR"({"action":"testBridge","requestId":7,"data":{}})"),
            Replies{RecordedMessage("testBridge")});
  EXPECT_EQ(Dispatch(LR"({"action":"openMailto","requestId":5,"data":{"url":"mailto:a@b.c"}})"),
            Replies{R"({"requestId":5,"success":true,"type":"openMailto"})"});
  EXPECT_EQ(Dispatch(LR"({"action":"openUrl","url":""})"),
            Replies{R"({"requestId":0,"success":true,"type":"openUrl"})"});
  EXPECT_EQ(
      Dispatch(LR"({"action":"openUrl","requestId":6,"url":1})"),
      Replies{
          R"({"message":"[json.exception.type_error.302] type must be string, but is number","type":"error"})"});
}

TEST(Actions, ExitQuitsWithoutAReply) {
  MSG message = {};
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
  EXPECT_TRUE(Dispatch(LR"({"action":"exitApp","requestId":1})").empty());
  bool quit = false;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) quit = quit || message.message == WM_QUIT;
  EXPECT_TRUE(quit);
}

TEST(Actions, KeepSettingsBesideTheExecutablesFolder) {
  const SettingsFile file;
  const std::string get = R"({"action":"getSettings","requestId":18})";
  EXPECT_EQ(Dispatch(std::wstring(get.begin(), get.end())), Replies{RecordedMessage("settings")});
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

TEST(Actions, NameTheProcessor) {
  const auto reply = nlohmann::json::parse(Dispatch(LR"({"action":"getCPU","requestId":3})").at(0));
  EXPECT_EQ(reply["type"], "cpu_info");
  EXPECT_EQ(reply["requestId"], 3);
  EXPECT_FALSE(reply["cpu"].get<std::string>().empty());
}

TEST(Actions, DebugSystemWritesItsLinesThenReplies) {
  const Replies replies = Dispatch(LR"({"action":"debugSystem","requestId":4})");
  std::vector<std::string> begin = {
      "[DebugSystem] Gathering",     "[DebugSpecs] CPU: ",          "[DebugSpecs] GPU: ",
      "[DebugSpecs] RAM: ",          "[DebugSpecs] OS: ",           "[DebugSpecs] IsAdmin: ",
      "[DebugTelemetry] CPU Load: ", "[DebugTelemetry] RAM Total: "};
  ASSERT_GT(replies.size(), begin.size() + 2);
  EXPECT_EQ(replies.front(), RecordedMessage("console_log"));
  for (size_t i = 0; i < begin.size(); ++i)
    EXPECT_TRUE(nlohmann::json::parse(replies[i])["message"].get<std::string>().starts_with(begin[i]))
        << replies[i];
  for (size_t i = 0; i + 1 < replies.size(); ++i)
    EXPECT_EQ(nlohmann::json::parse(replies[i])["style"], "system-line") << replies[i];
  EXPECT_EQ(replies.back(), R"({"requestId":4,"success":true,"type":"debugSystem"})");
}

TEST(Actions, UninstallSaysThatTheInstallerIsMissing) {
  MessageBoxCloser box(L"Chyba odinstalace");
  EXPECT_TRUE(Dispatch(LR"({"action":"uninstallAppSuite","requestId":1})").empty());
  EXPECT_EQ(box.Text(), L"Chyba: Soubor VarnelSetup.exe nebyl nalezen v instalačním adresáři.");
}
