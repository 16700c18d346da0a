#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/text.h"
#include "exec/tool_run.h"
#include "software/driver_scripts_win.h"
#include "software/package_lists_win.h"
#include "software/system_scan_win.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/tool_copy_win.h"

using nlohmann::json;
using testing::ElementsAre;

namespace {

constexpr const char* kUpgradeTable =
    "\r   - \r   \\ \rName   Id  Version  Available  Source\r\n------------\r\n"
    "Podzim Poznámky  Podzim.P  1.0  2.0  winget\r\n1 upgrades available.\r\n";
constexpr const char* kPodzim =
    R"({"available":"2.0","id":"Podzim.P","name":"Podzim Poznámky","source":"winget","version":"1.0"})";

json Prints(const std::string& text, unsigned exit_code = 0, int delay_ms = 0) {
  return {{"steps", json::array({{{"text", text}, {"delay_ms", delay_ms}}})}, {"exit", exit_code}};
}

std::string Log(const std::string& message, const char* style) {
  return json{{"type", "console_log"}, {"message", message}, {"style", style}}.dump();
}
std::string SystemLine(const std::string& message) {
  return Log(message, "system-line");
}
std::string ErrorLine(const std::string& message) {
  return Log(message, "stderr-line");
}
std::string SuccessLine(const std::string& message) {
  return Log(message, "success-line");
}

const std::string kScanHead[] = {
    SystemLine("Thread started: System Scan initiated."),
    R"({"requestId":5,"status":"scanning_apps","success":true,"type":"scan_progress"})",
    SystemLine("Scanning software updates via winget...")};
const std::string kQuerying = SystemLine("Querying driver updates via Windows Update COM Agent...");
const std::string kFinished = SuccessLine("Scan completed successfully, dispatching JSON to JS.");

std::vector<std::string> Scanned(std::initializer_list<std::string> rest) {
  std::vector<std::string> texts(std::begin(kScanHead), std::end(kScanHead));
  texts.insert(texts.end(), rest);
  return texts;
}

std::vector<std::string> RunScan() {
  TakePostedTexts();
  startSystemScan(5);
  return TakePostedTexts();
}

}  // namespace

TEST(PackageLists, AnswerWithTheTablesOfTheTool) {
  const ToolCopy winget(L"winget", {{"cases",
                                     {{{"when", "upgrade"},
                                       {"steps", json::array({{{"text", kUpgradeTable}, {"stderr", true}}})},
                                       {"exit", 7}},
                                      {{"when", "list"},
                                       {"steps",
                                        {{{"text", "---\r\nTarn  Brook.Tarn  1.0\r\nPozn"}},
                                         {{"hex", "FF"}},
                                         {{"text", "mky  P.P  2.0\r\n"}}}}}}}});
  getSoftwareUpdates(3);
  getInstalledApps(4);
  const auto texts = TakePostedTexts();
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0], R"({"count":1,"requestId":3,"success":true,"type":"software_updates","updates":[)" +
                          std::string(kPodzim) + "]}");
  const json apps = json::parse(texts[1])["apps"];
  ASSERT_EQ(apps.size(), 2u);
  EXPECT_EQ(apps[0]["name"], "Tarn");
  EXPECT_EQ(apps[1]["id"], "P.P");
  EXPECT_THAT(winget.CommandLines(),
              ElementsAre("winget upgrade --accept-source-agreements --disable-interactivity",
                          "winget list --accept-source-agreements --disable-interactivity"));
}

TEST(PackageLists, AreEmptyWithoutTheTool) {
  getSoftwareUpdates(1);
  getInstalledApps(2);
  EXPECT_THAT(
      TakePostedTexts(),
      ElementsAre(R"({"count":0,"requestId":1,"success":true,"type":"software_updates","updates":[]})",
                  R"({"apps":[],"requestId":2,"success":true,"type":"apps"})"));
}

TEST(CaptureTool, LosesWhatFollowsAZeroByteInAChunk) {
  const ToolCopy winget(
      L"winget",
      {{"steps",
        {{{"text", "one"}}, {{"hex", "610062"}, {"delay_ms", 700}}, {{"text", "two"}, {"delay_ms", 700}}}}});
  EXPECT_EQ(CaptureTool(L"winget x"), "oneatwo");
}

TEST(SystemScan, ReportsProgressAndBothLists) {
  const ToolCopy winget(L"winget", Prints(kUpgradeTable));
  const ToolCopy powershell(L"powershell",
                            Prints(R"({"scannedDriversCount":9,"updates":[{"Title":"Síť"}]})"));
  const std::string driver =
      R"({"availableVersion":"","categories":"Drivers","currentVersion":"","description":"","hardwareId":"",)"
      R"("isSkipped":false,"kbArticles":"None","releaseDate":"","severity":"","title":"Síť"})";
  EXPECT_EQ(
      RunScan(),
      Scanned(
          {SuccessLine("Software scan finished. Found 1 packages."),
           R"({"requestId":5,"softwareCount":1,"status":"scanning_drivers","success":true,"type":"scan_progress"})",
           kQuerying, SuccessLine("Driver scan finished. Found 1 updates."), kFinished,
           R"({"drivers":[)" + driver + R"(],"requestId":5,"scannedDriversCount":9,"software":[)" + kPodzim +
               R"(],"status":"done","success":true,"type":"scan_progress"})"}));
  EXPECT_THAT(winget.CommandLines(),
              ElementsAre("winget upgrade --accept-source-agreements --disable-interactivity"));
  EXPECT_THAT(powershell.CommandLines(),
              ElementsAre("powershell -NoProfile -ExecutionPolicy Bypass -File \"" +
                          WideToUtf8(GetExeDirectory()) + "\\check_updates.ps1\""));
}

TEST(SystemScan, GoesOnWithoutTheTools) {
  const ToolCopy powershell(L"powershell", nullptr);
  const auto texts = RunScan();
  ASSERT_EQ(texts.size(), 11u);
  EXPECT_EQ(texts[3], ErrorLine("[Error] Failed to execute winget. Win32 Error: 2"));
  EXPECT_THAT(texts[7],
              testing::HasSubstr("[Error] Failed to execute PowerShell driver check. Win32 Error: "));
  EXPECT_EQ(texts[8], SuccessLine("Driver scan finished. Found 0 updates."));
  EXPECT_EQ(
      texts[10],
      R"({"drivers":[],"requestId":5,"scannedDriversCount":171,"software":[],"status":"done","success":true,"type":"scan_progress"})");
}

TEST(SystemScan, NamesExitCodesAndReadsOnAllTheSame) {
  const ToolCopy winget(L"winget", Prints(kUpgradeTable, 0x8A15000F));
  const ToolCopy powershell(L"powershell", Prints("[1,2]", 5));
  const auto texts = RunScan();
  ASSERT_EQ(texts.size(), 11u);
  EXPECT_EQ(texts[3], ErrorLine("Winget process returned non-zero code: 2316632079"));
  EXPECT_EQ(texts[4], SuccessLine("Software scan finished. Found 1 packages."));
  EXPECT_EQ(texts[7], ErrorLine("PowerShell check returned exit code: 5"));
  EXPECT_EQ(json::parse(texts[10])["scannedDriversCount"], 171);
}

// The parse error quotes the first byte of a character.
TEST(SystemScan, EndsWithFailureWhenTheScriptPrintsNoJson) {
  const ToolCopy powershell(L"powershell", Prints("řeč"));
  const auto texts = RunScan();
  ASSERT_EQ(texts.size(), 9u);
  EXPECT_THAT(texts[7],
              testing::HasSubstr("[Fatal Error] Exception in scan thread: [json.exception.parse_error.101]"));
  EXPECT_EQ(json::parse(texts[7])["style"], "stderr-line");
  EXPECT_EQ(texts[8], R"({"requestId":5,"status":"done","success":false,"type":"scan_progress"})");
}

TEST(SystemScan, BeatsEveryFourSecondsWhileTheScriptRuns) {
  const ToolCopy powershell(L"powershell", Prints("{}", 0, 8200));
  const auto texts = RunScan();
  std::vector<int> ticks;
  for (const std::string& text : texts) {
    const json message = json::parse(text);
    if (message.value("status", "") == "scanning_drivers_heartbeat") ticks.push_back(message["ticks"]);
  }
  EXPECT_THAT(ticks, ElementsAre(1, 2));
  EXPECT_EQ(json::parse(texts.back())["status"], "done") << "nothing comes after the result";
}

TEST(DriverUpdates, AnswerWhateverTheScriptDoes) {
  const struct {
    const char* name;
    json script;
    std::string want;
  } cases[] = {
      {"not started", nullptr,
       R"({"count":0,"requestId":6,"scannedDriversCount":171,"success":true,"type":"driver_updates","updates":[]})"},
      {"no JSON", Prints("", 1),
       R"({"count":0,"requestId":6,"scannedDriversCount":171,"success":false,"type":"driver_updates","updates":[]})"},
      {"nothing found", Prints("{\"scannedDriversCount\":88,\"updates\":[]}\r\n"),
       R"({"count":0,"requestId":6,"scannedDriversCount":88,"success":true,"type":"driver_updates","updates":[]})"},
  };
  for (const auto& c : cases) {
    const ToolCopy powershell(L"powershell", c.script);
    getDriverUpdates(6);
    EXPECT_THAT(TakePostedTexts(), ElementsAre(c.want)) << c.name;
  }
}
