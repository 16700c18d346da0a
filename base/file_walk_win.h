#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "base/handle_win.h"

// Walks folders. No function here follows a junction or symbolic link that it meets, even if one is put
// in its way during the walk. A folder is opened once, and everything in it is reached from its handle,
// never by a path. Paths may be relative, may use either separator, and need no "\\?\" prefix, however
// long the paths below them are.

// Lists the entries of one folder without "." and ".." (FindFirstFileW, FindNextFileW).
class FolderListing {
 public:
  // Lists nothing for an empty path, a file, and a missing or unreadable folder.
  explicit FolderListing(const std::wstring& folder);

  // Returns the next entry, or null at the end. The entry is valid until the next call.
  const WIN32_FIND_DATAW* Next();

 private:
  WIN32_FIND_DATAW entry_ = {};
  FindHandle find_;
  bool is_first_ = true;
};

// Returns the size of a file from WIN32_FIND_DATAW or WIN32_FILE_ATTRIBUTE_DATA.
template <typename FileData>
uint64_t SizeBytes(const FileData& file) {
  return uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
}

// How to treat links in the path that the caller names, including the folder itself.
enum class PathLinks {
  kFollow,  // a link means its target
  kRefuse,  // counts as missing; the path must be absolute, on a drive, without short names
};

// Returns the bytes of all files in the folder and below it. Anything that cannot be listed counts as 0,
// and so do folders more than 4,095 levels below it. Stops after `limit_ms` and returns what it has
// counted by then. Throws std::bad_alloc.
uint64_t DirectorySize(const std::wstring& folder, PathLinks links = PathLinks::kFollow,
                       DWORD limit_ms = INFINITE);

// Deletes the contents of the folder, including read-only files, and keeps the folder. Deletes links but
// not their targets. Leaves whatever cannot be deleted (in use, access denied, thousands of levels deep)
// and the folders above it. Leaves everything in such a folder, too: it may be some process's current
// directory. Throws std::bad_alloc.
void ClearDirectoryContents(const std::wstring& folder, PathLinks links = PathLinks::kFollow);

// Deletes the folder itself as well. Refuses links in the path to it. Returns true if the folder is
// gone. Throws std::bad_alloc.
bool RemoveFolder(const std::wstring& folder);

// Returns the number of steps that walks in the calling thread have made, about one per entry. It grows
// as they go on, so another thread can tell a slow walk from a blocked one. Valid until the calling
// thread ends.
const std::atomic<uint64_t>& WalkSteps();
