#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "base/handle_win.h"

// Walks over folders. None of them follows a junction or symbolic link that it meets, whatever is
// put in the way while it runs: a folder is opened once, and all that is in it is reached from its
// handle, never by a path. Paths may be relative, have either separator, and need no "\\?\" prefix
// however long the paths below them become.

// The entries of one folder, "." and ".." left out (FindFirstFileW, FindNextFileW).
class FolderListing {
 public:
  // Of an empty path, a missing or unreadable folder or a file: nothing is listed.
  explicit FolderListing(const std::wstring& folder);

  // The next entry; null at the end. It is valid until the next call.
  const WIN32_FIND_DATAW* Next();

 private:
  WIN32_FIND_DATAW entry_ = {};
  FindHandle find_;
  bool is_first_ = true;
};

// Size of a file: of WIN32_FIND_DATAW or WIN32_FILE_ATTRIBUTE_DATA.
template <typename FileData>
uint64_t SizeBytes(const FileData& file) {
  return uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
}

// Links on the way to the folder that the caller names, itself included.
enum class PathLinks {
  kFollow,  // a link means its target
  kRefuse,  // there is no such folder; the path must then be absolute and of a drive, without short names
};

// Bytes of all files in the folder and below it. What cannot be listed adds nothing, and neither do folders
// that are not reached within `limit_ms`. Throws std::bad_alloc.
uint64_t DirectorySize(const std::wstring& folder, PathLinks links = PathLinks::kFollow,
                       DWORD limit_ms = INFINITE);

// Deletes what is in the folder, read-only files included, and keeps the folder. A link goes, its target
// stays. What cannot be deleted (in use, access denied, thousands of levels deep) stays, with the folders
// above it. Throws std::bad_alloc.
void ClearDirectoryContents(const std::wstring& folder, PathLinks links = PathLinks::kFollow);

// The same with the folder itself; links on the way to it are refused. True when it is gone. Throws
// std::bad_alloc.
bool RemoveFolder(const std::wstring& folder);
