#include "disk/folder_scan.h"

#include <map>
#include <mutex>
#include <random>
#include <set>

#include <gtest/gtest.h>

using SystemHelper::DiskFileItem;

namespace {

struct Entry {
  std::wstring name;
  bool is_directory, is_link;
  uint64_t size;
};
using Tree = std::map<std::wstring, std::vector<Entry>>;  // by plain path; a missing folder is unreadable

// Replaces the calls of Windows: answers from a tree in memory.
struct TreeReader {
  const Tree& tree;
  std::wstring costly_folder = {};  // reading it runs out of memory

  template <typename Visit>
  bool operator()(const std::wstring& pattern, Visit&& visit) const {
    const bool verbatim = pattern.starts_with(L"\\\\?\\");
    const std::wstring path = pattern.substr(verbatim ? 4 : 0);
    if (!path.ends_with(L"\\*") || (!verbatim && path.size() > 259)) return false;
    if (path == costly_folder + L"\\*") throw std::bad_alloc();
    const auto folder = tree.find(path.substr(0, path.size() - 2));
    if (folder == tree.end()) return false;
    for (const wchar_t* dots : {L".", L".."}) visit(FoundEntry{dots, true, false, 0});
    for (const auto& [name, is_directory, is_link, size] : folder->second)
      visit(FoundEntry{name.c_str(), is_directory, is_link, size});
    return true;
  }
};

struct Analysis {
  FolderSizes folder_sizes{{L"stale", 1}};
  std::vector<DiskFileItem> files{{1, L"stale"}};
  std::vector<std::pair<int, std::wstring>> progress;

  Analysis(const Tree& tree, const std::wstring& root) {
    std::mutex mutex;
    AnalyzeFolders(TreeReader{tree}, root, folder_sizes, files, [&](int count, const std::wstring& folder) {
      const std::lock_guard lock(mutex);
      progress.emplace_back(count, folder);
    });
  }
};

// Computes the expected result of an analysis in the simplest way.
uint64_t Count(const Tree& tree, const std::wstring& path, FolderSizes& sizes,
               std::multimap<uint64_t, std::wstring>& files) {
  uint64_t total = 0;
  const auto folder = tree.find(path);
  for (const Entry& entry : folder == tree.end() ? std::vector<Entry>{} : folder->second) {
    const std::wstring inner = path + L"\\" + entry.name;
    if (entry.is_link) continue;
    if (!entry.is_directory) files.emplace(entry.size, inner);
    total += entry.is_directory ? Count(tree, inner, sizes, files) : entry.size;
  }
  return sizes[path] = total;
}

// Returns a tree of files, folders, links to both, unreadable folders, long names and large files.
Tree RandomTree(std::mt19937& random) {
  const auto below = [&](size_t limit) { return random() % limit; };
  std::vector<std::wstring> folders{L"C:"};
  Tree tree{{L"C:", {}}};
  for (size_t i = below(400); i > 0; --i) {
    const std::wstring parent = folders[below(folders.size())];
    const std::wstring name = L"n" + std::to_wstring(i) + std::wstring(below(8) == 0 ? 90 : 0, L'ž');
    const bool is_directory = below(3) == 0, is_link = below(4) == 0;
    tree[parent].push_back({name, is_directory, is_link, uint64_t{below(100)} << (below(4) == 0 ? 33 : 3)});
    if (!is_directory) continue;
    const std::wstring path = parent + L"\\" + name;
    tree[path].push_back({L"inside", false, false, 1 << 20});
    if (!is_link) folders.push_back(path);
  }
  for (size_t i = 1; i < folders.size(); ++i)
    if (below(20) == 0) tree.erase(folders[i]);
  return tree;
}

std::vector<Entry> Files(int count) {
  std::vector<Entry> files;
  for (int i = 0; i < count; ++i) files.push_back({L"f" + std::to_wstring(i), false, false, 1});
  return files;
}

}  // namespace

TEST(AnalyzeFolders, AgreesWithAPlainCountOnRandomTrees) {
  std::mt19937 random(2);
  for (int round = 0; round < 150; ++round) {
    const Tree tree = RandomTree(random);
    FolderSizes sizes;
    std::multimap<uint64_t, std::wstring> files;
    sizes[L"C:\\"] = Count(tree, L"C:", sizes, files);
    const Analysis got(tree, round % 2 == 0 ? L"C:\\" : L"C:");
    EXPECT_EQ(got.folder_sizes, sizes);
    EXPECT_EQ(got.files.size(), std::min<size_t>(files.size(), 30));
    auto largest = files.rbegin();
    std::set<std::wstring> paths;
    for (const DiskFileItem& file : got.files) {
      EXPECT_EQ(file.size, (largest++)->first);
      const auto [first, last] = files.equal_range(file.size);
      EXPECT_TRUE(std::any_of(first, last, [&](const auto& it) { return it.second == file.path; }));
      EXPECT_TRUE(paths.insert(file.path).second) << "each at most once";
    }
  }
}

TEST(AnalyzeFolders, ReportsEachFiveThousandthItemOfABranch) {
  Tree tree{{L"C:", Files(4980)}};  // the 5,000th is the last branch itself, seen in the root
  for (int i = 0; i < 20; ++i) {
    tree[L"C:"].push_back({L"b" + std::to_wstring(i), true, false, 0});
    tree[L"C:\\b" + std::to_wstring(i)] = Files(800);
  }
  std::set<int> counts;
  for (const auto& [count, folder] : Analysis(tree, L"C:\\").progress) {
    EXPECT_TRUE(counts.insert(count).second);
    EXPECT_TRUE(tree.contains(folder) && folder != L"C:");
  }
  EXPECT_EQ(counts, (std::set{10000, 15000, 20000})) << "counted over all branches";
}

TEST(AnalyzeFolders, KeepsItsResultsIfMemoryRunsOut) {
  const Tree tree{{L"C:", {{L"costly", true, false, 0}, {L"other", true, false, 0}}},
                  {L"C:\\other", Files(7)}};
  FolderSizes folder_sizes;
  std::vector<DiskFileItem> files;
  EXPECT_THROW(AnalyzeFolders(TreeReader{tree, L"C:\\costly"}, L"C:\\", folder_sizes, files, {}),
               std::bad_alloc);
  EXPECT_EQ(folder_sizes, (FolderSizes{{L"C:", 7}, {L"C:\\", 7}, {L"C:\\other", 7}}));
  EXPECT_EQ(files.size(), 7u);
}

TEST(ListFolder, SortsAndTakesFolderSizesFromTheCache) {
  const Tree tree{{L"C:",
                   {{L"a.txt", false, false, 5},
                    {L"small", true, false, 0},
                    {L"never scanned", true, false, 99},
                    {L"large", true, false, 0},
                    {L"b.txt", false, false, uint64_t{1} << 40},
                    {L"junction", true, true, 0},
                    {L"link", false, true, 5}}}};
  const FolderSizes sizes{{L"C:\\small", 1}, {L"C:\\large", uint64_t{1} << 33}, {L"C:\\\\large", 3}};
  for (const wchar_t* root : {L"C:", L"C:\\"}) {
    std::wstring rows;
    for (const FolderEntry& row : ListFolder(TreeReader{tree}, root, sizes)) {
      EXPECT_EQ(row.path, L"C:\\" + row.name);
      rows += row.name + (row.is_directory ? L"/ " : L" ") + std::to_wstring(row.size) + L", ";
    }
    EXPECT_EQ(rows,
              L"large/ 8589934592, small/ 1, never scanned/ 0, junction/ 0, b.txt 1099511627776, "
              L"a.txt 5, link 5, ");
  }
}

TEST(ExtendedReadPath, PrefixesOnlyPathsThatWindowsWouldKeep) {
  for (const std::wstring path : {L"C:\\", L"c:\\a b\\ends with dot.", L"C:\\a\\...\\b", L"C:\\a\\"})
    EXPECT_EQ(ExtendedReadPath(path), L"\\\\?\\" + path);
  for (const wchar_t* path : {L"C:", L"a\\b", L"1:\\a", L"C:/a", L"C:\\a/b", L"C:\\\\a", L"C:\\a\\..",
                              L"C:\\.\\a", L"\\\\server\\share\\a", L"\\\\?\\C:\\a"})
    EXPECT_EQ(ExtendedReadPath(path), path);
}
