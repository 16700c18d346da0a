#include <windows.h>
#include <winioctl.h>

#include <map>
#include <thread>

#include <gtest/gtest.h>

#include "base/extended_path.h"
#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/text.h"
#include "disk/disk_actions.h"
#include "disk/disk_space.h"
#include "testing/recording_page.h"
#include "testing/temp_folder_win.h"

using nlohmann::json;
using SystemHelper::AnalyzeDiskSpace;
using SystemHelper::DiskFileItem;

namespace {

class DiskTree : public testing::Test {
 protected:
  ~DiskTree() override {
    ClearDirectoryContents(root_);
  }  // with the names that only an extended path reaches

  // Adds a file that takes no room, and the folders above it.
  void Add(const std::wstring& inner, int64_t size) {
    const std::wstring path = ExtendedPath(root_ + L"\\" + inner);
    for (size_t cut = path.find(L'\\', path.size() - inner.size()); cut != path.npos;
         cut = path.find(L'\\', cut + 1))
      CreateDirectoryW(path.substr(0, cut).c_str(), nullptr);
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    DWORD returned = 0;
    DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    const LARGE_INTEGER end = {.QuadPart = size};
    ASSERT_TRUE(SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.get()))
        << WideToUtf8(inner);
  }

  const TempFolder folder_;
  const std::wstring& root_ = folder_.path;  // without trailing backslash
};

}  // namespace

TEST_F(DiskTree, CountsEveryKindOfFolder) {
  constexpr int64_t kHuge = int64_t{5} << 30;
  const std::wstring name(100, L'd'), deep = name + L"\\" + name + L"\\" + name;
  Add(L"alpha\\inner\\b.bin", 2000);
  Add(L"kůň\\写真.jpg", kHuge);
  Add(L"locked\\unseen.bin", 4000);
  Add(L"dots\\same\\x", 10);
  Add(L"dots\\same.\\x", 20);
  Add(deep + L"\\far.bin", 5000);
  Add(L"root.bin", 6000);
  const FileHandle lock(CreateFileW((root_ + L"\\locked").c_str(), FILE_LIST_DIRECTORY, 0, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  ASSERT_TRUE(lock);

  FolderSizes sizes{{L"stale", 1}};
  std::vector<DiskFileItem> files{{1, L"stale"}};
  AnalyzeDiskSpace(root_, sizes, files, nullptr);

  using Sizes = std::map<std::wstring, uint64_t>;
  const auto below_root = [&](const std::wstring& path) {
    EXPECT_TRUE(path.starts_with(root_));
    return path.substr(root_.size());
  };
  constexpr uint64_t kTotal = 2000 + kHuge + 10 + 20 + 5000 + 6000;
  Sizes measured, largest, listed;
  for (const auto& [path, size] : sizes) measured[below_root(path)] = size;
  EXPECT_EQ(measured, (Sizes{{L"", kTotal},
                             {L"\\", kTotal},
                             {L"\\alpha", 2000},
                             {L"\\alpha\\inner", 2000},
                             {L"\\kůň", kHuge},
                             {L"\\locked", 0},
                             {L"\\dots", 30},
                             {L"\\dots\\same", 10},
                             {L"\\dots\\same.", 20},
                             {L"\\" + name, 5000},
                             {L"\\" + name + L"\\" + name, 5000},
                             {L"\\" + deep, 5000}}));
  for (const DiskFileItem& file : files) largest[below_root(file.path)] = file.size;
  EXPECT_EQ(largest, (Sizes{{L"\\kůň\\写真.jpg", kHuge},
                            {L"\\root.bin", 6000},
                            {L"\\" + deep + L"\\far.bin", 5000},
                            {L"\\alpha\\inner\\b.bin", 2000},
                            {L"\\dots\\same.\\x", 20},
                            {L"\\dots\\same\\x", 10}}));
  for (const FolderEntry& entry : ListFolderContents(root_ + L"\\", sizes)) listed[entry.path] = entry.size;
  EXPECT_EQ(listed, (Sizes{{root_ + L"\\alpha", 2000},
                           {root_ + L"\\kůň", kHuge},
                           {root_ + L"\\locked", 0},
                           {root_ + L"\\dots", 30},
                           {root_ + L"\\" + name, 5000},
                           {root_ + L"\\root.bin", 6000}}));
  EXPECT_EQ(ListFolderContents(root_ + L"\\" + deep, sizes).size(), 1u);
  EXPECT_TRUE(ListFolderContents(root_ + L"\\locked", sizes).empty());
}

TEST_F(DiskTree, MissingOrFileRootsAreEmpty) {
  Add(L"file", 5);
  for (const std::wstring& root : {root_ + L"\\missing", root_ + L"\\file", std::wstring(L"?:\\")}) {
    FolderSizes sizes{{L"stale", 1}};
    std::vector<DiskFileItem> files{{1, L"stale"}};
    AnalyzeDiskSpace(root, sizes, files, nullptr);
    EXPECT_TRUE(sizes.empty() && files.empty() && ListFolderContents(root, sizes).empty())
        << WideToUtf8(root);
  }
}

TEST_F(DiskTree, ListingsUseTheLastAnalysisOnly) {
  Add(L"one\\sub\\x", 100);
  Add(L"two\\sub\\x", 200);
  const std::string one = WideToUtf8(root_) + "\\one", two = WideToUtf8(root_) + "\\two";
  const auto listed_size = [](const std::string& folder) -> uint64_t {
    TakePostedTexts();
    getFolderContents(3, folder);
    return TakePostedMessages().at(0)["items"][0]["size"];
  };
  startDiskAnalysis(1, one);
  EXPECT_EQ(listed_size(one), 100u);
  EXPECT_EQ(listed_size(two), 0u);
  startDiskAnalysis(2, two);
  EXPECT_EQ(listed_size(one), 0u);
  EXPECT_EQ(listed_size(two), 200u);
  startDiskAnalysis(3, one + "\\missing");
  EXPECT_EQ(listed_size(two), 0u);

  startDiskAnalysis(4, one);
  TakePostedTexts();
  std::thread worker([&] {
    for (int i = 0; i < 100; ++i) startDiskAnalysis(5, one);
  });
  for (int i = 0; i < 300; ++i) getFolderContents(6, one);
  worker.join();
  int unknown = 0;
  for (const json& message : TakePostedMessages())
    unknown += message["requestId"] == 6 && message["items"][0]["size"] == 0;
  EXPECT_GT(unknown, 0) << "while an analysis runs";
}

TEST_F(DiskTree, AnalysesAtTheSameTimeDoNotMix) {
  for (int i = 0; i < 4; ++i)
    for (const wchar_t* file : {L"\\a\\f", L"\\b\\f", L"\\c\\f"})
      Add(std::to_wstring(i) + file, 10 * (i + 1));
  TakePostedTexts();
  std::vector<std::thread> workers;
  for (int i = 0; i < 4; ++i) {
    const std::string folder = WideToUtf8(root_) + "\\" + std::to_string(i);
    for (const auto body : {startDiskAnalysis, getFolderContents})
      workers.emplace_back([=] {
        for (int round = 0; round < 25; ++round) body(i, folder);
      });
  }
  for (std::thread& worker : workers) worker.join();
  int analyses = 0;
  for (const json& message : TakePostedMessages()) {
    const uint64_t size = 10 * (message["requestId"].get<uint64_t>() + 1);
    const bool is_listing = message["type"] == "getFolderContents";
    const json& folders = message.at(is_listing ? "items" : "folders");
    EXPECT_EQ(folders.size(), 3u);
    for (const json& folder : folders)
      EXPECT_TRUE(folder["size"] == size || (is_listing && folder["size"] == 0)) << message.dump();
    if (is_listing) continue;
    EXPECT_EQ(message.at("files").size(), 3u);
    ++analyses;
  }
  EXPECT_EQ(analyses, 100);
}
