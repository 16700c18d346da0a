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
  const std::string version(kCurrentVersion);
  EXPECT_EQ(BuildUpdateCheckReply(5, R"({"downloadUrl":"https://other.example","extra":1})"),
            R"({"changelog":"","currentVersion":")" + version +
                R"(","downloadUrl":"","hasUpdate":false,"mandatory":false,"onlineVersion":")" + version +
                R"(","requestId":5,"success":true,"type":"checkForUpdates"})")
      << "missing members have defaults";
  for (const char* description :
       {"", "<html>404</html>", "[]", "{\"version\":null}", "{\"version\":\"\xFF\"}"})
    EXPECT_EQ(BuildUpdateCheckReply(5, description),
              R"({"error":"Invalid version file","requestId":5,"success":false,"type":"checkForUpdates"})")
        << description;
}

TEST(ApplyUpdateReply, CarriesTheErrorOnlyWhenItFailed) {
  EXPECT_EQ(BuildApplyUpdateReply(6, ""), RecordedMessage("downloadAndApplyUpdate"));
  EXPECT_EQ(BuildApplyUpdateReply(6, "Failed to download update executable"),
            RecordedMessage("downloadAndApplyUpdate.failed"));
}

TEST(QuickActions, AreTheRecordedMessages) {
  EXPECT_EQ(BuildRebuildIconsReply(7, true), RecordedMessage("quickAction"));
  EXPECT_EQ(
      BuildSafeModeReply(7, false),
      R"({"message":"Nepodařilo se nastavit nouzový režim.","requestId":7,"success":false,"type":"quickAction"})");
  EXPECT_EQ(BuildFileCheckStatus(8), RecordedMessage("sfc_stream.status"));
  EXPECT_EQ(BuildFileCheckLine(8, "Verification 40% complete."), RecordedMessage("sfc_stream.stdout"));
  EXPECT_EQ(BuildFileCheckExit(8, 2, FileCheckResultText(2)), RecordedMessage("sfc_stream.exit"));
  EXPECT_TRUE(FileCheckResultText(0).starts_with("[Success] "));
}

TEST(RebuildIcons, ChoosesProcessesAndFiles) {
  for (const wchar_t* name : {L"explorer.exe", L"Explorer.EXE", L"EXPLORER.EXE"})
    EXPECT_TRUE(IsExplorer(name));
  for (const wchar_t* name :
       {L"", L"explorer", L"iexplorer.exe", L"explorer2.exe", L"explorer.exe.bak", L"explorer.ex"})
    EXPECT_FALSE(IsExplorer(name));
  for (const wchar_t* name : {L"iconcache_16.db", L"thumbcache_256.db", L"iconcache_"})
    EXPECT_TRUE(IsIconCacheFile(name));
  for (const wchar_t* name :
       {L"IconCache_1.db", L"iconcache.db", L"xiconcache_1.db", L"", L"Thumbcache_1.db"})
    EXPECT_FALSE(IsIconCacheFile(name));
}
