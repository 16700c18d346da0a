#include <chrono>
#include <iterator>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "disk/disk_messages.h"
#include "disk/folder_scan.h"
#include "testing/recorded_message.h"

using SystemHelper::DiskFileItem;

namespace {

enum Kind { kFile, kFolder, kLink, kFolderLink };
struct Entry {
  std::wstring name;
  Kind kind;
  uint64_t size;
};
using Tree =
    std::map<std::wstring, std::vector<Entry>>;  // by plain path; a folder that is absent is unreadable

// Stands in for the calls of Windows: answers from a tree in memory.
struct TreeReader {
  const Tree& tree;
  std::wstring slow_folder = {}, costly_folder = {};

  template <typename Visit>
  bool operator()(const std::wstring& pattern, Visit&& visit) const {
    const bool verbatim = pattern.starts_with(L"\\\\?\\");
    std::wstring path = pattern.substr(verbatim ? 4 : 0);
    if (!path.ends_with(L"\\*") || (!verbatim && path.size() > 259)) return false;
    path.resize(path.size() - 2);
    if (path == slow_folder) std::this_thread::sleep_for(std::chrono::milliseconds(30));
    if (path == costly_folder) throw std::bad_alloc();
    const auto folder = tree.find(path);
    if (folder == tree.end()) return false;
    for (const wchar_t* dots : {L".", L".."}) visit(FoundEntry{dots, true, false, 0});
    for (const Entry& entry : folder->second)
      visit(FoundEntry{entry.name.c_str(), entry.kind == kFolder || entry.kind == kFolderLink,
                       entry.kind == kLink || entry.kind == kFolderLink, entry.size});
    return true;
  }
};

struct Analysis {
  FolderSizes folder_sizes{{L"stale", 1}};
  std::vector<DiskFileItem> files{{1, L"stale"}};
  std::vector<std::pair<int, std::wstring>> progress;

  Analysis(const TreeReader& reader, const std::wstring& root) {
    std::mutex mutex;
    AnalyzeFolders(reader, root, folder_sizes, files, [&](int count, const std::wstring& folder) {
      const std::lock_guard lock(mutex);
      progress.emplace_back(count, folder);
    });
  }
};

// What an analysis must find, counted the plain way.
struct Expected {
  FolderSizes folder_sizes;
  std::map<std::wstring, uint64_t> files;
  int items = 0;

  uint64_t Count(const Tree& tree, const std::wstring& path) {
    uint64_t total = 0;
    const auto folder = tree.find(path);
    for (const Entry& entry : folder == tree.end() ? std::vector<Entry>{} : folder->second) {
      if (entry.kind == kLink || entry.kind == kFolderLink) continue;
      ++items;
      const std::wstring inner = path + L"\\" + entry.name;
      if (entry.kind == kFile) files[inner] = entry.size;
      total += entry.kind == kFile ? entry.size : Count(tree, inner);
    }
    return folder_sizes[path] = total;
  }
};

constexpr Kind kKinds[] = {kFile, kFile, kFile, kFile, kFolder, kFolder, kLink, kFolderLink};

Tree RandomTree(std::mt19937& random) {
  Tree tree;
  const auto below = [&](size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
  };
  const size_t limit = 1 + below(400), sizes = 1 + below(100);
  std::vector<std::wstring> folders{L"C:"};
  tree[L"C:"];
  for (size_t i = 0; i < limit; ++i) {
    const std::wstring& parent = folders[below(folders.size())];
    const std::wstring name = L"n" + std::to_wstring(i) + std::wstring(below(8) == 0 ? 90 : 0, L'ž');
    const Kind kind = kKinds[below(std::size(kKinds))];
    const uint64_t size = kind == kFolder ? 0 : uint64_t{below(sizes)} << (below(4) == 0 ? 33 : 3);
    const std::wstring path = parent + L"\\" + name;
    tree[parent].push_back({name, kind, size});
    if (kind == kFolderLink) tree[path].push_back({L"behind a link", kFile, 1 << 20});
    if (kind != kFolder) continue;
    folders.push_back(path);
    tree[path];
  }
  for (size_t i = 1; i < folders.size(); ++i)
    if (below(20) == 0) tree.erase(folders[i]);
  return tree;
}

std::vector<Entry> Files(int count, uint64_t size) {
  std::vector<Entry> files;
  for (int i = 0; i < count; ++i) files.push_back({L"f" + std::to_wstring(i), kFile, size});
  return files;
}

}  // namespace

TEST(AnalyzeFolders, AgreesWithAPlainCountOnRandomTrees) {
  std::mt19937 random(2);
  for (int round = 0; round < 150; ++round) {
    const Tree tree = RandomTree(random);
    Expected want;
    want.folder_sizes[L"C:\\"] = want.Count(tree, L"C:");
    std::vector<uint64_t> sizes;
    for (const auto& [path, size] : want.files) sizes.push_back(size);
    std::sort(sizes.rbegin(), sizes.rend());
    sizes.resize(std::min<size_t>(sizes.size(), 30));

    const Analysis got({tree}, round % 2 == 0 ? L"C:\\" : L"C:");
    EXPECT_EQ(got.folder_sizes, want.folder_sizes);
    std::vector<uint64_t> got_sizes;
    for (const DiskFileItem& file : got.files) {
      ASSERT_TRUE(want.files.contains(file.path));
      EXPECT_EQ(file.size, want.files[file.path]);
      want.files.erase(file.path);  // each at most once
      got_sizes.push_back(file.size);
    }
    EXPECT_EQ(got_sizes, sizes);
  }
}

TEST(AnalyzeFolders, ReportsEachFiveThousandthItemOfABranch) {
  const struct {
    const char* name;
    int root_files, branches, branch_files;
    std::set<int> want;
  } cases[] = {
      {"4,999 items with the branch itself", 0, 1, 4998, {}},
      {"5,000 items", 0, 1, 4999, {5000}},
      {"the 5,000th is the branch itself, seen in the root", 4999, 1, 1, {}},
      {"the root holds only files", 10000, 0, 0, {}},
      {"the count goes on from the root's", 4000, 1, 11000, {5000, 10000, 15000}},
      {"and over all branches", 0, 20, 999, {5000, 10000, 15000, 20000}},
  };
  for (const auto& c : cases) {
    Tree tree{{L"C:", Files(c.root_files, 1)}};
    for (int i = 0; i < c.branches; ++i) {
      tree[L"C:"].push_back({L"b" + std::to_wstring(i), kFolder, 0});
      tree[L"C:\\b" + std::to_wstring(i)] = Files(c.branch_files, 1);
    }
    std::set<int> counts;
    for (const auto& [count, folder] : Analysis({tree}, L"C:\\").progress) {
      EXPECT_TRUE(counts.insert(count).second) << c.name;
      EXPECT_TRUE(tree.contains(folder) && folder != L"C:") << c.name;
    }
    EXPECT_EQ(counts, c.want) << c.name;
  }
}

TEST(AnalyzeFolders, MergesBranchesInTheOrderOfTheRoot) {
  const Tree tree{{L"C:", {{L"first", kFolder, 0}, {L"second", kFolder, 0}}},
                  {L"C:\\first", Files(30, 7)},
                  {L"C:\\second", Files(30, 7)}};
  for (const DiskFileItem& file : Analysis({tree, L"C:\\first"}, L"C:\\").files)
    EXPECT_TRUE(file.path.starts_with(L"C:\\first\\")) << "the later of two equal files took a place";
}

TEST(AnalyzeFolders, KeepsWhatItHasWhenMemoryRunsOut) {
  const Tree tree{{L"C:", {{L"costly", kFolder, 0}, {L"other", kFolder, 0}}}, {L"C:\\other", Files(1, 7)}};
  const TreeReader reader{.tree = tree, .costly_folder = L"C:\\costly"};
  FolderSizes folder_sizes;
  std::vector<DiskFileItem> files;
  EXPECT_THROW(AnalyzeFolders(reader, L"C:\\", folder_sizes, files, {}), std::bad_alloc);
  EXPECT_EQ(folder_sizes, (FolderSizes{{L"C:", 7}, {L"C:\\", 7}, {L"C:\\other", 7}}));
  EXPECT_EQ(files.size(), 1u);
}

TEST(AnalyzeFolders, WalksADeepTree) {
  Tree tree{{L"C:", {{L"d", kFolder, 0}}}};
  std::wstring path = L"C:";
  for (int depth = 0; depth < 2000; ++depth) tree[path += L"\\d"] = {{L"f", kFile, 1}, {L"d", kFolder, 0}};
  EXPECT_EQ(Analysis({tree}, L"C:").folder_sizes.at(L"C:"), 2000u);
}

TEST(ListFolder, SortsAndTakesFolderSizesFromTheCache) {
  const Tree tree{{L"C:",
                   {{L"a.txt", kFile, 5},
                    {L"small", kFolder, 0},
                    {L"never scanned", kFolder, 99},
                    {L"large", kFolder, 0},
                    {L"b.txt", kFile, uint64_t{1} << 40},
                    {L"junction", kFolderLink, 0},
                    {L"link", kLink, 5}}}};
  const FolderSizes sizes{{L"C:\\small", 1}, {L"C:\\large", uint64_t{1} << 33}, {L"C:\\\\large", 3}};
  for (const wchar_t* root : {L"C:", L"C:\\"}) {
    std::wstring rows;
    for (const FolderEntry& row : ListFolder(TreeReader{tree}, root, sizes)) {
      EXPECT_EQ(row.path, L"C:\\" + row.name);
      rows += row.name + (row.is_directory ? L"/ " : L" ") + std::to_wstring(row.size) + L", ";
    }
    EXPECT_EQ(
        rows,
        L"large/ 8589934592, small/ 1, never scanned/ 0, junction/ 0, b.txt 1099511627776, a.txt 5, link 5, ");
  }
  EXPECT_TRUE(ListFolder(TreeReader{tree}, L"C:\\small", sizes).empty());
}

TEST(VerbatimPath, OnlyPrefixesWhatWindowsWouldNotChange) {
  for (const std::wstring path : {L"C:\\", L"c:\\a b\\ends with dot.", L"C:\\a\\...\\b", L"C:\\a\\"})
    EXPECT_EQ(VerbatimPath(path), L"\\\\?\\" + path);
  for (const wchar_t* path :
       {L"C:", L"", L"\\", L"a\\b", L"1:\\a", L"C:/a", L"C:\\a/b", L"C:\\\\a", L"C:\\a\\\\", L"C:\\a\\..",
        L"C:\\.\\a", L"\\\\server\\share\\a", L"\\\\?\\C:\\a"})
    EXPECT_EQ(VerbatimPath(path), path);
}

TEST(DiskMessages, AreTheRecordedOnes) {
  EXPECT_EQ(DiskProgressMessage(7, 5000, L"C:\\Users\\Žofie\\写真"),
            RecordedMessage("disk_analysis_progress"));
  const uint64_t photo_bytes = 734'003'200;
  EXPECT_EQ(DiskDoneMessage(7, "C:\\",
                            {{L"Users", L"C:\\Users", true, photo_bytes},
                             {L"Perfect Logs", L"C:\\Perfect Logs", true, 0},
                             {L"pagefile.sys", L"C:\\pagefile.sys", false, uint64_t{1} << 34}},
                            {{uint64_t{1} << 34, L"C:\\pagefile.sys"},
                             {photo_bytes, L"C:\\Users\\Žofie\\写真\\dovolená.mp4"}},
                            true),
            RecordedMessage("disk_analysis_progress.done"));
  EXPECT_EQ(FolderContentsMessage(8, "C:\\Users\\Žofie",
                                  {{L"写真", L"C:\\Users\\Žofie\\写真", true, photo_bytes},
                                   {L"úkoly.txt", L"C:\\Users\\Žofie\\úkoly.txt", false, 512}}),
            RecordedMessage("getFolderContents"));
  EXPECT_EQ(DiskDoneMessage(1, "Q:\\", {}, {}, false),
            R"({"drive":"Q:\\","files":[],"folders":[],"requestId":1,"status":"done","success":false,)"
            R"("type":"disk_analysis_progress"})");
}
