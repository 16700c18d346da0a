#include "disk/disk_actions.h"

#include <atomic>
#include <exception>
#include <memory>

#include "base/page.h"
#include "base/text.h"
#include "disk/disk_messages.h"
#include "disk/disk_space.h"

namespace {

using SharedFolderSizes = std::shared_ptr<const FolderSizes>;

// Sizes of the last analysis. A map is never changed once it is in here, so that a listing can go on reading
// the one it has while the next analysis runs. Never destroyed: detached workers may outlive static objects.
std::atomic<SharedFolderSizes>& FolderSizeCache() {
  static auto& cache = *new std::atomic<SharedFolderSizes>(std::make_shared<const FolderSizes>());
  return cache;
}

}  // namespace

void startDiskAnalysis(int request_id, const std::string& drive) {
  FolderSizeCache() = std::make_shared<const FolderSizes>();
  const std::wstring root = Utf8ToWide(drive);
  auto folder_sizes = std::make_shared<FolderSizes>();
  std::vector<SystemHelper::DiskFileItem> files;
  bool is_complete = true;
  try {
    SystemHelper::AnalyzeDiskSpace(root, *folder_sizes, files,
                                   [request_id](int scanned, const std::wstring& folder) {
                                     PostJsonToJs(DiskProgressMessage(request_id, scanned, folder));
                                   });
  } catch (const std::exception&) {
    is_complete = false;  // the page waits for the end all the same
  }
  FolderSizeCache() = folder_sizes;
  PostJsonToJs(
      DiskDoneMessage(request_id, drive, ListFolderContents(root, *folder_sizes), files, is_complete));
}

void getFolderContents(int request_id, const std::string& path) {
  const SharedFolderSizes folder_sizes = FolderSizeCache();
  PostJsonToJs(FolderContentsMessage(request_id, path, ListFolderContents(Utf8ToWide(path), *folder_sizes)));
}
