#include "maint/quick_actions.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "testing/recorded_message.h"

TEST(FileCheckResultText, DescribesHowTheCheckEnded) {
  EXPECT_EQ(FileCheckResultText(2), nlohmann::json::parse(RecordedMessage("sfc_stream.exit"))["message"]);
  EXPECT_TRUE(FileCheckResultText(0).starts_with("[Success] "));
}

TEST(RebuildIcons, ChoosesProcessesAndFiles) {
  for (const wchar_t* name : {L"explorer.exe", L"Explorer.EXE", L"EXPLORER.EXE"})
    EXPECT_TRUE(IsExplorer(name));
  for (const wchar_t* name : {L"explorer", L"iexplorer.exe", L"explorer2.exe"})
    EXPECT_FALSE(IsExplorer(name));
  for (const wchar_t* name : {L"iconcache_16.db", L"thumbcache_256.db", L"iconcache_"})
    EXPECT_TRUE(IsIconCacheFile(name));
  for (const wchar_t* name : {L"IconCache_1.db", L"iconcache.db", L"xiconcache_1.db"})
    EXPECT_FALSE(IsIconCacheFile(name));
}
