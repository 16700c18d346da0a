#include "disk/analysis.h"

#include <windows.h>

#include <atomic>
#include <exception>
#include <memory>

#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"

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

using SharedFolderSizes = std::shared_ptr<const FolderSizes>;

// Returns the sizes of the last analysis. A map never changes once it is stored here, so a listing can
// keep reading its own while the next analysis runs. The cache is never destroyed, because detached
// workers may outlive static objects.
std::atomic<SharedFolderSizes>& FolderSizeCache() {
  static auto& cache = *new std::atomic<SharedFolderSizes>(std::make_shared<const FolderSizes>());
  return cache;
}

void PostProgress(int request_id, int scanned, const std::wstring& folder) {
  const nlohmann::json progress = {{"type", "disk_analysis_progress"},
                                   {"status", "scanning"},
                                   {"scanned", scanned},
                                   {"currentFolder", WideToUtf8(folder)},
                                   {"requestId", request_id}};
  PostJsonToJs(progress.dump());
}

}  // namespace

void SystemHelper::AnalyzeDiskSpace(const std::wstring& root, FolderSizes& folder_sizes,
                                    std::vector<DiskFileItem>& files, ScanProgress progress) {
  AnalyzeFolders(FindFiles{}, root, folder_sizes, files, progress);
}

std::vector<FolderEntry> ListFolderContents(const std::wstring& path, const FolderSizes& folder_sizes) {
  return ListFolder(FindFiles{}, path, folder_sizes);
}

void startDiskAnalysis(int request_id, const std::string& drive) {
  FolderSizeCache() = std::make_shared<const FolderSizes>();
  const std::wstring root = Utf8ToWide(drive);
  auto folder_sizes = std::make_shared<FolderSizes>();
  std::vector<SystemHelper::DiskFileItem> files;
  bool is_complete = true;
  try {
    SystemHelper::AnalyzeDiskSpace(
        root, *folder_sizes, files,
        [request_id](int scanned, const std::wstring& folder) { PostProgress(request_id, scanned, folder); });
  } catch (const std::exception&) {
    is_complete = false;  // The page still waits for the final message.
  }
  FolderSizeCache() = folder_sizes;
  PostReply("disk_analysis_progress", request_id, is_complete,
            {{"status", "done"},
             {"drive", drive},
             {"folders", ToJson(ListFolderContents(root, *folder_sizes))},
             {"files", ToJson(files)}});
}

void getFolderContents(int request_id, const std::string& path) {
  const SharedFolderSizes folder_sizes = FolderSizeCache();
  PostReply("getFolderContents", request_id, true,
            {{"path", path}, {"items", ToJson(ListFolderContents(Utf8ToWide(path), *folder_sizes))}});
}
