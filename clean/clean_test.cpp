#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lower_case.h"
#include "base/text.h"
#include "clean/downloads.h"
#include "clean/junk.h"
#include "clean/system_files.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

using nlohmann::json;

TEST(MayBeEmptied, RefusesEverythingButTemporaryFolders) {
  const auto same = [](std::wstring_view a, std::wstring_view b) {
    return LowerCase(std::wstring(a)) == LowerCase(std::wstring(b));
  };
  const KeptFolders kept = {LR"(C:\Windows)", {LR"(D:\Apps\Varnel\bin)", LR"(C:\Users\Jiří Novák\)"}};
  for (const wchar_t* folder :
       {LR"(C:\Users\Jiří Novák\AppData\Local\Temp\)", LR"(R:\)", LR"(E:\Temp)", LR"(C:\Temp\)",
        LR"(C:\Windows\Temp)", LR"(c:\windows\SYSTEMTEMP\)", LR"(C:\WindowsTemp)", LR"(C:\Users\Jiří)"})
    EXPECT_TRUE(MayBeEmptied(folder, kept, same)) << WideToUtf8(folder);
  for (const wchar_t* folder : {LR"(C:\)", LR"(C:)", LR"(C:/)", LR"(c:\users)", LR"(C:\USERS\Jiří novák)",
                                LR"(C:\Users\Jiří Novák\\)", LR"(C:\Windows\)", LR"(C:\Windows\System32\)",
                                LR"(C:\Windows\Temporary)", LR"(D:\Apps)", LR"(D:\Apps\Varnel\bin\)"})
    EXPECT_FALSE(MayBeEmptied(folder, kept, same)) << WideToUtf8(folder);
  EXPECT_FALSE(MayBeEmptied(LR"(W:\)", {LR"(W:\Windows)", {}}, same)) << "above Windows alone";
}

TEST(ParseJunkSelection, SelectsEverythingNotDeselected) {
  const std::pair<const char*, JunkFlags> cases[] = {
      {"null", {true, true, true, true, true, true, true}},
      {R"({"userTemp":false,"systemLogs":false})", {true, false, true, true, true, true, false}},
      {R"({"windowsTemp":false,"prefetch":false,"winUpdate":true,"browserCache":false,"shaderCache":false,"other":1})",
       {false, true, false, true, false, false, true}},
  };
  for (const auto& [data, want] : cases)
    EXPECT_EQ(ParseJunkSelection(json::parse(data), 1).flags, want) << data;
  for (const char* data : {R"({"userTemp":null})", R"({"userTemp":0})", R"([])"})
    EXPECT_THROW(ParseJunkSelection(json::parse(data), 1), json::type_error) << data;
}

TEST(RaiseToServiceSizes, TakesTheLargerFigureOfASuccessfulAnswer) {
  const struct {
    const char* answer;
    uint64_t windows_temp, prefetch;
  } cases[] = {
      {R"({"success":true,"windowsTempBytes":99,"prefetchBytes":201})", 100, 201},
      {R"({"success":true,"windowsTempBytes":18446744073709551615})", 18446744073709551615u, 200},
      {R"({"success":true,"windowsTempBytes":"500","prefetchBytes":-1})", 100, 200},
      {R"({"success":false,"windowsTempBytes":500,"prefetchBytes":500})", 100, 200},
  };
  for (const auto& c : cases) {
    JunkSizes sizes = {{100, 1, 200, 1, 1, 1, 1}};
    RaiseToServiceSizes(json::parse(c.answer), sizes);
    const JunkSizes want = {{c.windows_temp, 1, c.prefetch, 1, 1, 1, 1}};
    EXPECT_EQ(sizes.bytes, want.bytes) << c.answer;
  }
}

TEST(BuildJunkReply, IsTheMessageThePageReads) {
  EXPECT_EQ(BuildJunkReply("junk", 7, {{38912, 128000, 4096, 10, 1048576, 2048, 0}}),
            RecordedMessage("junk"));
  EXPECT_EQ(BuildJunkReply("cleanJunk", 8, {{9007199254740992, 15, 0, 0, 0, 0, 3}}),
            RecordedMessage("cleanJunk"));
  EXPECT_EQ(BuildJunkReply("junk", 7, {{}, {false, true}}), RecordedMessage("junk.kept"));
  for (const char* id : {"7.5", "4294967296", "true"}) {
    const JunkSelection selection = ParseJunkSelection(json::object(), json::parse(id));
    EXPECT_EQ(json::parse(BuildJunkReply("cleanJunk", selection.request_id, {}))["requestId"].dump(), id);
  }
}

TEST(Downloads, ListsOldLargeInstallersAndArchives) {
  constexpr uint64_t kHour = 36'000'000'000, kDay = 24 * kHour;
  constexpr uint64_t kNow = 133'000'000'000'000'000;
  constexpr uint64_t kMiB = 1'048'576;
  const struct {
    const wchar_t* name;
    uint64_t size_bytes, written_at;
    int want_days;  // -1: not listed
  } cases[] = {
      {L"a.zip", kMiB, kNow - 33 * kDay, -1},
      {L"a.zip", kMiB + 1, kNow - 33 * kDay, 33},
      {L"a.exe", 2 * kMiB, kNow - 30 * kDay, 30},
      {L"a.exe", 2 * kMiB, kNow - 30 * kDay + 1, -1},
      {L"a.exe", 2 * kMiB, kNow - 31 * kDay + 1, 30},
      {L"future.exe", 2 * kMiB, kNow + 1, -1},
      {L"undated.exe", 2 * kMiB, 0, -1},
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

TEST(SystemFiles, RepliesAreTheMessagesThePageReads) {
  EXPECT_EQ(PostedReply("getSystemFilesAdvisor", 11, true,
                        ToJson(SystemFiles{{true, 6'871'947'673}, true, {true, 17'179'869'184}, {}})),
            RecordedMessage("getSystemFilesAdvisor"));
}
