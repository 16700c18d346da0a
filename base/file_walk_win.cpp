#include "base/file_walk_win.h"

#include <stack>
#include <string_view>
#include <utility>
#include <vector>

#include "base/extended_path.h"

namespace {

bool IsFolder(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Junction, symbolic link, mounted volume, or another thing that only its file system understands.
bool IsReparsePoint(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// The "\\?\" form with a separator at its end, so that an entry's path is this and its name. Empty when there
// is no such path.
std::wstring ExtendedFolder(std::wstring folder) {
  if (folder.empty()) return folder;
  if (folder.back() != L'\\' && folder.back() != L'/') folder += L'\\';
  if (folder.starts_with(LR"(\\?\)")) return folder;
  std::wstring full(GetFullPathNameW(folder.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(folder.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() ? full : ExtendedPath(full);
}

// Calls DeleteFileW or RemoveDirectoryW, which both take the link and not its target, and both refuse what is
// marked read-only: then the mark is taken off, and put back when the entry stays all the same. Returns 0 or
// the error.
DWORD Remove(BOOL(WINAPI* remove)(const wchar_t*), const std::wstring& path, DWORD attributes) {
  if (remove(path.c_str())) return ERROR_SUCCESS;
  DWORD error = GetLastError();
  if (error != ERROR_ACCESS_DENIED || (attributes & FILE_ATTRIBUTE_READONLY) == 0) return error;
  SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  if (remove(path.c_str())) return ERROR_SUCCESS;
  error = GetLastError();
  SetFileAttributesW(path.c_str(), attributes);
  return error;
}

// Opens a folder so that nobody can rename or delete it, and thus put a link in its place, until the handle
// is closed. (Whoever owns the folder can still empty it and turn it into a junction where it stands.)
// Nothing when it cannot be opened, or has become a link since it was listed. Of the attribute queries, this
// one is answered by every file system.
FileHandle HoldFolder(const std::wstring& path) {
  FileHandle folder(CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  FILE_BASIC_INFO information = {};
  if (folder &&
      (!GetFileInformationByHandleEx(folder.get(), FileBasicInfo, &information, sizeof(information)) ||
       IsReparsePoint(information.FileAttributes)))
    folder.reset();
  return folder;
}

// A folder that is being emptied.
struct Level {
  Level(const std::wstring& path, DWORD folder_attributes, FileHandle hold)
      : folder(path + L'\\'), attributes(folder_attributes), held(std::move(hold)), listing(folder) {}

  std::wstring folder;
  DWORD attributes;
  FileHandle held;
  FolderListing listing;
};

}  // namespace

FolderListing::FolderListing(const std::wstring& folder) {
  const std::wstring path = ExtendedFolder(folder);
  if (!path.empty()) find_ = FindHandle(FindFirstFileW((path + L'*').c_str(), &entry_));
}

const WIN32_FIND_DATAW* FolderListing::Next() {
  while (find_) {
    if (!std::exchange(is_first_, false) && !FindNextFileW(find_.get(), &entry_)) break;
    const std::wstring_view name = entry_.cFileName;
    if (name != L"." && name != L"..") return &entry_;
  }
  find_.reset();
  return nullptr;
}

uint64_t DirectorySize(const std::wstring& folder) {
  uint64_t size_bytes = 0;
  std::vector<std::wstring> waiting{ExtendedFolder(folder)};
  while (!waiting.empty()) {
    const std::wstring path = std::move(waiting.back());
    waiting.pop_back();
    FolderListing listing(path);
    while (const WIN32_FIND_DATAW* entry = listing.Next()) {
      if (!IsFolder(entry->dwFileAttributes))
        size_bytes += SizeBytes(*entry);
      else if (!IsReparsePoint(entry->dwFileAttributes))
        waiting.push_back(path + entry->cFileName + L'\\');
    }
  }
  return size_bytes;
}

void ClearDirectoryContents(const std::wstring& folder) {
  std::wstring path = ExtendedFolder(folder);
  if (path.empty()) return;
  path.pop_back();
  // Not recursive: the deepest tree that the file system allows does not fit a thread's stack.
  std::stack<Level> levels;
  levels.emplace(path, DWORD{0}, FileHandle());
  while (!levels.empty()) {
    Level& level = levels.top();
    if (const WIN32_FIND_DATAW* entry = level.listing.Next()) {
      const DWORD attributes = entry->dwFileAttributes;
      path.assign(level.folder).append(entry->cFileName);
      if (!IsFolder(attributes)) {
        Remove(DeleteFileW, path, attributes);
      } else if (Remove(RemoveDirectoryW, path, attributes) == ERROR_DIR_NOT_EMPTY &&
                 !IsReparsePoint(attributes)) {
        if (FileHandle held = HoldFolder(path)) levels.emplace(path, attributes, std::move(held));
      }
    } else {
      path.assign(level.folder, 0, level.folder.size() - 1);
      const DWORD attributes = level.attributes;
      levels.pop();
      if (!levels.empty()) Remove(RemoveDirectoryW, path, attributes);
    }
  }
}
