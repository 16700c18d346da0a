#include "clean/downloads.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(Downloads, ListsOldLargeInstallersAndArchives) {
  constexpr uint64_t kHour = 36'000'000'000, kDay = 24 * kHour;
  constexpr uint64_t kNow = 133'000'000'000'000'000;
  constexpr uint64_t kMiB = 1'048'576;
  const struct {
    const wchar_t* name;
    uint64_t size_bytes, written_at;
    int want_days;  // -1: not listed
  } cases[] = {
      {L"a.zip", kMiB, kNow - 33 * kDay, -1},     {L"a.zip", kMiB + 1, kNow - 33 * kDay, 33},
      {L"a.exe", 2 * kMiB, kNow - 30 * kDay, 30}, {L"a.exe", 2 * kMiB, kNow - 30 * kDay + 1, -1},
      {L"future.exe", 2 * kMiB, kNow + 1, -1},    {L"undated.exe", 2 * kMiB, 0, -1},
  };
  for (const auto& c : cases) {
    const auto item = ReviewDownload(L"C:\\D", {c.name, c.size_bytes, c.written_at}, kNow);
    EXPECT_EQ(item ? static_cast<int>(item->days_old) : -1, c.want_days) << testing::PrintToString(c.name);
  }
  for (const wchar_t* name : {L"a.MsI", L"a.7Z", L"a.tar.gz"}) EXPECT_TRUE(HasDownloadJunkExtension(name));
  for (const wchar_t* name : {L"a.tar.xz", L"a.zip.", L".zip"}) EXPECT_FALSE(HasDownloadJunkExtension(name));
  EXPECT_EQ(ReviewDownload(L"D:\\", {L"a.zip", 2 * kMiB, 1}, kNow)->path, "D:\\a.zip");

  const std::wstring folder = L"D:\\Stažené";
  const std::vector<DownloadJunkItem> items = {
      ReviewDownload(folder, {L"Žluťoučký instalátor.MSI", 2 * kMiB, kNow - 31 * kDay}, kNow).value(),
      ReviewDownload(folder, {L"obraz.iso", 5'368'709'120, kNow - 400 * kDay}, kNow).value()};
  EXPECT_EQ(PostedReply("getDownloadsJunk", 9, true, ToJson(items)), RecordedMessage("getDownloadsJunk"));
}
