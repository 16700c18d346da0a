#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "maint/quick_actions.h"
#include "maint/update.h"
#include "maint/version.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

using nlohmann::json;

TEST(DescribeUpdate, ReadsTheDescription) {
  json want = json::parse(RecordedMessage("checkForUpdates"));
  want["currentVersion"] = kCurrentVersion;
  EXPECT_EQ(
      PostedReply(
          "checkForUpdates", 5, true,
          DescribeUpdate(
              R"({"version":"99.10.0","download_url":"https://releases.varnel.example/99.10.0/VarnelSetup.exe",)"
              R"("changelog":"Rychlejší analýza disku\nOpravy","mandatory":true})")),
      want.dump());
  const std::string version(kCurrentVersion);
  EXPECT_EQ(PostedReply("checkForUpdates", 5, true,
                        DescribeUpdate(R"({"downloadUrl":"https://other.example","extra":1})")),
            R"({"changelog":"","currentVersion":")" + version +
                R"(","downloadUrl":"","hasUpdate":false,"mandatory":false,"onlineVersion":")" + version +
                R"(","requestId":5,"success":true,"type":"checkForUpdates"})")
      << "missing members have defaults";
  for (const char* description :
       {"", "<html>404</html>", "[]", "{\"version\":null}", "{\"version\":\"\xFF\"}"})
    EXPECT_ANY_THROW(DescribeUpdate(description)) << description;
}

TEST(FileCheckResultText, DescribesHowTheCheckEnded) {
  EXPECT_EQ(FileCheckResultText(2), json::parse(RecordedMessage("sfc_stream.exit"))["message"]);
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
