#include "disk/disk_space.h"

#include <windows.h>

#include "base/file_walk_win.h"
#include "base/handle_win.h"

namespace {

struct FindFiles {
  template <typename Visit>
  bool operator()(const std::wstring& pattern, Visit&& visit) const {
    WIN32_FIND_DATAW found;
    const FindHandle search(FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                             nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (!search) return false;
    do {
      visit(FoundEntry{found.cFileName, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                       (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0, SizeBytes(found)});
    } while (FindNextFileW(search.get(), &found));
    return true;
  }
};

}  // namespace

void SystemHelper::AnalyzeDiskSpace(const std::wstring& root, FolderSizes& folder_sizes,
                                    std::vector<DiskFileItem>& files, ScanProgress progress) {
  AnalyzeFolders(FindFiles{}, root, folder_sizes, files, progress);
}

std::vector<FolderEntry> ListFolderContents(const std::wstring& path, const FolderSizes& folder_sizes) {
  return ListFolder(FindFiles{}, path, folder_sizes);
}
