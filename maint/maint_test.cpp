#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "maint/quick_actions.h"
#include "maint/update_reply.h"
#include "maint/version.h"
#include "testing/recorded_message.h"

using nlohmann::json;

TEST(UpdateCheckReply, ReadsTheDescription) {
  json want = json::parse(RecordedMessage("checkForUpdates"));
  want["currentVersion"] = kCurrentVersion;
  EXPECT_EQ(
      BuildUpdateCheckReply(
          5,
          R"({"version":"99.10.0","download_url":"https://releases.varnel.example/99.10.0/VarnelSetup.exe",)"
          R"("changelog":"Rychlejší analýza disku\nOpravy","mandatory":true})"),
      want.dump());
}

TEST(UpdateCheckReply, MissingMembersHaveDefaults) {
  const std::string version(kCurrentVersion);
  EXPECT_EQ(BuildUpdateCheckReply(5, R"({"downloadUrl":"https://other.example","extra":1})"),
            R"({"changelog":"","currentVersion":")" + version +
                R"(","downloadUrl":"","hasUpdate":false,"mandatory":false,"onlineVersion":")" + version +
                R"(","requestId":5,"success":true,"type":"checkForUpdates"})");
}

TEST(UpdateCheckReply, RefusesWhatIsNoDescription) {
  const std::string refused =
      R"({"error":"Invalid version file","requestId":5,"success":false,"type":"checkForUpdates"})";
  for (const char* description :
       {"", "<html>404</html>", "{\"version\":\"2.0.0\"", "[]", "null", "\"2.0.0\"", "{\"version\":2}",
        "{\"version\":null}", "{\"mandatory\":\"yes\"}", "{\"changelog\":[]}", "{\"version\":\"\xFF\"}"})
    EXPECT_EQ(BuildUpdateCheckReply(5, description), refused) << description;
}

TEST(ApplyUpdateReply, CarriesTheErrorOnlyWhenItFailed) {
  EXPECT_EQ(BuildApplyUpdateReply(6, ""), RecordedMessage("downloadAndApplyUpdate"));
  EXPECT_EQ(BuildApplyUpdateReply(6, "Failed to download update executable"),
            RecordedMessage("downloadAndApplyUpdate.failed"));
}

TEST(QuickActions, SayExactlyThis) {
  EXPECT_EQ(BuildRebuildIconsReply(7, true), RecordedMessage("quickAction"));
  EXPECT_EQ(
      BuildRebuildIconsReply(7, false),
      R"({"message":"Nepodařilo se obnovit mezipaměť ikon.","requestId":7,"success":false,"type":"quickAction"})");
  EXPECT_EQ(
      BuildSafeModeReply(7, true),
      R"({"message":"Systém byl úspěšně nakonfigurován pro spuštění do nouzového režimu. Restartuji počítač...",)"
      R"("requestId":7,"success":true,"type":"quickAction"})");
  EXPECT_EQ(
      BuildSafeModeReply(7, false),
      R"({"message":"Nepodařilo se nastavit nouzový režim.","requestId":7,"success":false,"type":"quickAction"})");
  EXPECT_EQ(BuildFileCheckStatus(8), RecordedMessage("sfc_stream.status"));
  EXPECT_EQ(BuildFileCheckLine(8, "Verification 40% complete."), RecordedMessage("sfc_stream.stdout"));
  EXPECT_EQ(BuildFileCheckExit(8, 2, FileCheckResultText(2)), RecordedMessage("sfc_stream.exit"));
  EXPECT_EQ(FileCheckResultText(0),
            "[Success] Sken integrity systému byl úspěšně dokončen bez nalezení chyb.");
}

TEST(RebuildIcons, ChoosesProcessesAndFiles) {
  for (const wchar_t* name : {L"explorer.exe", L"Explorer.EXE", L"EXPLORER.EXE"})
    EXPECT_TRUE(IsExplorer(name));
  for (const wchar_t* name : {L"", L"explorer", L"iexplorer.exe", L"explorer.exe.bak", L"explorer.ex"})
    EXPECT_FALSE(IsExplorer(name));
  for (const wchar_t* name : {L"iconcache_16.db", L"thumbcache_256.db", L"iconcache_"})
    EXPECT_TRUE(IsIconCacheFile(name));
  for (const wchar_t* name :
       {L"IconCache_1.db", L"iconcache.db", L"xiconcache_1.db", L"", L"Thumbcache_1.db"})
    EXPECT_FALSE(IsIconCacheFile(name));
}
