#include <gtest/gtest.h>
#include <windows.h>

#include <winioctl.h>

#include <map>
#include <thread>

#include "base/handle_win.h"
#include "base/text.h"
#include "disk/disk_actions.h"
#include "disk/disk_messages.h"
#include "disk/disk_space.h"
#include "testing/directory_link_win.h"
#include "testing/recording_page.h"

using nlohmann::json;
using SystemHelper::AnalyzeDiskSpace;
using SystemHelper::DiskFileItem;

namespace {

// A folder of the test's own, removed at its end.
class DiskTree : public testing::Test {
 protected:
  void SetUp() override {
    wchar_t temp[MAX_PATH];
    ASSERT_NE(GetTempPathW(MAX_PATH, temp), 0u);
    root_ = temp + (L"varnel-disk-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                    std::to_wstring(GetTickCount()));
    AddFolder(L"");
  }
  void TearDown() override {
    for (const std::wstring& link : links_) EXPECT_TRUE(RemoveDirectoryLink(link));
    Remove(root_);
  }

  static constexpr wchar_t kPrefix[] = L"\\\\?\\";
  std::wstring Full(const std::wstring& inner) const {
    return kPrefix + root_ + (inner.empty() ? L"" : L"\\" + inner);
  }
  void AddFolder(const std::wstring& inner) { ASSERT_TRUE(CreateDirectoryW(Full(inner).c_str(), nullptr)); }
  void AddFile(const std::wstring& inner, int64_t size) {
    const FileHandle file(CreateFileW(Full(inner).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(file) << WideToUtf8(inner);
    if (size == 0) return;
    DWORD returned = 0;
    DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER end;
    end.QuadPart = size;
    ASSERT_TRUE(SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.get()));
  }
  void AddEmptyFiles(const std::wstring& folder, int count) {
    for (int i = 0; i < count; ++i) AddFile(folder + L"\\" + std::to_wstring(i), 0);
  }

  void AddLink(const std::wstring& inner, const std::wstring& target) {
    links_.push_back(root_ + L"\\" + inner);
    ASSERT_TRUE(MakeDirectoryLink(links_.back(), root_ + L"\\" + target));
  }

  static void Remove(const std::wstring& path) {
    const std::wstring verbatim = kPrefix + path;
    const DWORD attributes = GetFileAttributesW(verbatim.c_str());
    ASSERT_EQ(attributes & FILE_ATTRIBUTE_REPARSE_POINT, 0u);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      EXPECT_TRUE(DeleteFileW(verbatim.c_str()));
      return;
    }
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    {
      const FindHandle search(FindFirstFileW((verbatim + L"\\*").c_str(), &found));
      do names.emplace_back(found.cFileName);
      while (FindNextFileW(search.get(), &found));
    }
    for (const std::wstring& name : names)
      if (name != L"." && name != L"..") Remove(path + L"\\" + name);
    EXPECT_TRUE(RemoveDirectoryW(verbatim.c_str())) << WideToUtf8(path);
  }

  std::wstring root_;  // without trailing backslash
  std::vector<std::wstring> links_;
};

}  // namespace

TEST_F(DiskTree, CountsEveryKindOfFolder) {
  const std::wstring long_name(100, L'd');
  const std::wstring long_path = long_name + L"\\" + long_name + L"\\" + long_name;
  for (const std::wstring& folder :
       {std::wstring(L"alpha"), std::wstring(L"alpha\\inner"), std::wstring(L"empty"), std::wstring(L"kůň"),
        std::wstring(L"locked"), std::wstring(L"dots"), std::wstring(L"dots\\same"),
        std::wstring(L"dots\\same."), std::wstring(L"links"), long_name, long_name + L"\\" + long_name,
        long_path})
    AddFolder(folder);
  AddFile(L"alpha\\a.bin", 1000);
  AddFile(L"alpha\\inner\\b.bin", 2000);
  AddFile(L"kůň\\写真.jpg", int64_t{5} << 30);
  AddFile(L"locked\\unseen.bin", 4000);
  AddFile(L"dots\\same\\x", 10);
  AddFile(L"dots\\same.\\x", 20);
  AddFile(long_path + L"\\far.bin", 5000);
  AddFile(L"root.bin", 6000);
  AddLink(L"to_alpha", L"alpha");
  AddLink(L"links\\to_alpha", L"alpha");
  const FileHandle lock(CreateFileW(Full(L"locked").c_str(), FILE_LIST_DIRECTORY, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  ASSERT_TRUE(lock);

  FolderSizes sizes{{L"stale", 1}};
  std::vector<DiskFileItem> files{{1, L"stale"}};
  AnalyzeDiskSpace(root_, sizes, files, nullptr);

  const uint64_t total = 1000 + 2000 + (uint64_t{5} << 30) + 10 + 20 + 5000 + 6000;
  const FolderSizes want = {{root_, total},
                            {root_ + L"\\", total},
                            {root_ + L"\\alpha", 3000},
                            {root_ + L"\\alpha\\inner", 2000},
                            {root_ + L"\\empty", 0},
                            {root_ + L"\\kůň", uint64_t{5} << 30},
                            {root_ + L"\\locked", 0},
                            {root_ + L"\\dots", 30},
                            {root_ + L"\\dots\\same", 10},
                            {root_ + L"\\dots\\same.", 20},
                            {root_ + L"\\links", 0},
                            {root_ + L"\\" + long_name, 5000},
                            {root_ + L"\\" + long_name + L"\\" + long_name, 5000},
                            {root_ + L"\\" + long_path, 5000}};
  EXPECT_EQ(sizes, want);
  const std::vector<std::pair<uint64_t, std::wstring>> want_files = {{uint64_t{5} << 30, L"\\kůň\\写真.jpg"},
                                                                     {6000, L"\\root.bin"},
                                                                     {5000, L"\\" + long_path + L"\\far.bin"},
                                                                     {2000, L"\\alpha\\inner\\b.bin"},
                                                                     {1000, L"\\alpha\\a.bin"},
                                                                     {20, L"\\dots\\same.\\x"},
                                                                     {10, L"\\dots\\same\\x"}};
  ASSERT_EQ(files.size(), want_files.size());
  for (size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(files[i].size, want_files[i].first);
    EXPECT_EQ(files[i].path, root_ + want_files[i].second);
  }

  // Links are listed, with the size of a folder that was never measured.
  std::map<std::wstring, uint64_t> listed;
  for (const FolderEntry& entry : ListFolderContents(root_ + L"\\", sizes)) {
    EXPECT_EQ(entry.path, root_ + L"\\" + entry.name);
    listed[entry.name] = entry.size;
  }
  EXPECT_EQ(listed, (std::map<std::wstring, uint64_t>{{L"alpha", 3000},
                                                      {L"empty", 0},
                                                      {L"kůň", uint64_t{5} << 30},
                                                      {L"locked", 0},
                                                      {L"dots", 30},
                                                      {L"links", 0},
                                                      {long_name, 5000},
                                                      {L"root.bin", 6000},
                                                      {L"to_alpha", 0}}));
  EXPECT_EQ(ListFolderContents(root_ + L"\\" + long_path, sizes).size(), 1u);
  EXPECT_TRUE(ListFolderContents(root_ + L"\\locked", sizes).empty());
}

TEST_F(DiskTree, MissingOrFileRootsAreEmpty) {
  AddFile(L"file", 5);
  for (const std::wstring& root :
       {root_ + L"\\missing", root_ + L"\\file", std::wstring(L"?:\\"), std::wstring(L"C:\\<>")}) {
    FolderSizes sizes{{L"stale", 1}};
    std::vector<DiskFileItem> files{{1, L"stale"}};
    AnalyzeDiskSpace(root, sizes, files, nullptr);
    EXPECT_TRUE(sizes.empty() && files.empty()) << WideToUtf8(root);
    EXPECT_TRUE(ListFolderContents(root, sizes).empty()) << WideToUtf8(root);
  }
}

TEST_F(DiskTree, PostsProgressAndOneFinalMessage) {
  AddFolder(L"branch");
  for (int i = 0; i < 19; ++i) {  // Wine makes files of small folders much faster
    AddFolder(L"branch\\" + std::to_wstring(i));
    AddEmptyFiles(L"branch\\" + std::to_wstring(i), 262);
  }
  AddFile(L"root.bin", 9);
  const std::string drive = WideToUtf8(root_) + "\\";
  TakePostedTexts();
  startDiskAnalysis(11, drive);  // 2 items of the root, 19 folders and 4978 files
  EXPECT_EQ(TakePostedMessages().size(), 1u) << "4,999 items";

  AddFile(L"branch\\last", 1);
  startDiskAnalysis(12, drive);
  const std::vector<json> messages = TakePostedMessages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0]["status"], "scanning");
  EXPECT_EQ(messages[0]["scanned"], 5000);
  EXPECT_EQ(messages[0]["requestId"], 12);
  EXPECT_TRUE(messages[0]["currentFolder"].get<std::string>().starts_with(drive + "branch"));
  EXPECT_EQ(messages[1]["status"], "done");
  EXPECT_EQ(messages[1]["success"], true);
  EXPECT_EQ(messages[1]["requestId"], 12);
  EXPECT_EQ(messages[1]["drive"], drive);
  EXPECT_EQ(messages[1]["folders"],
            json::array(
                {{{"name", "branch"}, {"path", drive + "branch"}, {"isDirectory", true}, {"size", 1}},
                 {{"name", "root.bin"}, {"path", drive + "root.bin"}, {"isDirectory", false}, {"size", 9}}}));
  EXPECT_EQ(messages[1]["files"].size(), 30u);
  EXPECT_EQ(messages[1]["files"][0], (json{{"path", drive + "root.bin"}, {"size", 9}}));
}

TEST_F(DiskTree, ListingsUseTheLastAnalysisOnly) {
  AddFolder(L"one");
  AddFolder(L"one\\sub");
  AddFile(L"one\\sub\\x", 100);
  AddFolder(L"two");
  AddFolder(L"two\\sub");
  AddFile(L"two\\sub\\x", 200);
  const std::string one = WideToUtf8(root_) + "\\one", two = WideToUtf8(root_) + "\\two";
  const auto listed_size = [](const std::string& folder) -> uint64_t {
    TakePostedTexts();
    getFolderContents(3, folder);
    const std::vector<json> messages = TakePostedMessages();
    EXPECT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0]["type"], "getFolderContents");
    EXPECT_EQ(messages[0]["path"], folder);
    return messages[0]["items"][0]["size"];
  };
  startDiskAnalysis(1, one);
  EXPECT_EQ(listed_size(one), 100u);
  EXPECT_EQ(listed_size(two), 0u);
  startDiskAnalysis(2, two);
  EXPECT_EQ(listed_size(one), 0u);
  EXPECT_EQ(listed_size(two), 200u);
  startDiskAnalysis(3, one + "\\missing");
  EXPECT_EQ(listed_size(two), 0u);
  const json failed = json::parse(FolderContentsMessage(4, "x", ListFolderContents(root_ + L"\\none", {})));
  EXPECT_EQ(failed["success"], true);
}

TEST_F(DiskTree, AnalysesAtTheSameTimeDoNotMix) {
  for (int i = 0; i < 4; ++i) {
    const std::wstring top = std::to_wstring(i);
    AddFolder(top);
    for (const wchar_t* branch : {L"\\a", L"\\b", L"\\c"}) {
      AddFolder(top + branch);
      AddFile(top + branch + L"\\f", 10 * (i + 1));
    }
  }
  TakePostedTexts();
  std::vector<std::thread> workers;
  for (int i = 0; i < 4; ++i) {
    const std::string folder = WideToUtf8(root_) + "\\" + std::to_string(i);
    workers.emplace_back([=] {
      for (int round = 0; round < 25; ++round) startDiskAnalysis(i, folder);
    });
    workers.emplace_back([=] {
      for (int round = 0; round < 25; ++round) getFolderContents(i, folder);
    });
  }
  for (std::thread& worker : workers) worker.join();
  int analyses = 0;
  for (const json& message : TakePostedMessages()) {
    const uint64_t size = 10 * (message["requestId"].get<uint64_t>() + 1);
    if (message["type"] == "getFolderContents") {
      for (const json& item : message["items"])
        EXPECT_TRUE(item["size"] == size || item["size"] == 0) << message.dump();
      continue;
    }
    ++analyses;
    ASSERT_EQ(message["folders"].size(), 3u);
    for (const json& folder : message["folders"]) EXPECT_EQ(folder["size"], size);
    EXPECT_EQ(message["files"].size(), 3u);
  }
  EXPECT_EQ(analyses, 100);
}

TEST(DiskMessagesOnWindows, HalfASurrogatePairStaysJson) {
  const std::wstring half{L'a', wchar_t{0xD800}, L'b'};
  const json message =
      json::parse(DiskDoneMessage(1, "C:\\", {{half, L"C:\\" + half, false, 1}}, {{1, half}}));
  EXPECT_EQ(message["folders"][0]["name"],
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(message["files"][0]["path"],
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_NO_THROW(json::parse(DiskProgressMessage(1, 5000, half)));
}
