#include "base/file_walk_win.h"

#include <winternl.h>

#include <atomic>
#include <cstddef>
#include <stack>
#include <string_view>
#include <utility>

#include "base/extended_path.h"
#include "base/path_names.h"

namespace {

// Each level of a walk holds an open folder and a buffer of its listing.
constexpr size_t kMaxLevels = 4096;
constexpr size_t kListingBytes = 8192;

constexpr ACCESS_MASK kList = FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
constexpr ULONG kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// Prevents renaming and deleting the folder while it is open. Its owner can still empty it and turn it
// into a junction in place, but the handle stays that of the folder.
constexpr ULONG kHold = FILE_SHARE_READ | FILE_SHARE_WRITE;

bool IsFolder(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Returns true for a junction, a symbolic link, a mounted volume or anything else that only its file
// system understands.
bool IsReparsePoint(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool IsReadOnly(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

constexpr auto kStatusInvalidParameter = static_cast<NTSTATUS>(0xC000000D);
constexpr auto kStatusSharingViolation = static_cast<NTSTATUS>(0xC0000043);
constexpr NTSTATUS kStatusOplockBreakInProgress = 0x108;

// Known to driver headers only, although NtQueryInformationFile accepts it.
constexpr auto kFileInternalInformation = static_cast<FILE_INFORMATION_CLASS>(6);

// FileDispositionInfoEx, which headers declare only for programs that require Windows 10 version 1607.
constexpr auto kFileDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

// Returns the "\\?\" form with a trailing separator, to which an entry's name can be appended. Returns
// an empty path if there is no such form.
std::wstring ExtendedFolder(std::wstring folder) {
  if (folder.empty()) return folder;
  if (folder.back() != L'\\' && folder.back() != L'/') folder += L'\\';
  if (folder.starts_with(LR"(\\?\)")) return folder;
  std::wstring full(GetFullPathNameW(folder.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(folder.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() ? full : ExtendedPath(full);
}

// Lists an open folder without "." and ".." (FileIdBothDirectoryInfo). Names do not end with a NUL.
class EntryListing {
 public:
  struct Entry {
    std::wstring_view name;
    DWORD attributes;
    uint64_t size_bytes;
    uint64_t id;
  };

  explicit EntryListing(HANDLE folder) : folder_(folder) {}

  // Returns false at the end (ERROR_NO_MORE_FILES) and if the rest cannot be listed. The entry is valid
  // until the next call.
  bool Next(Entry& entry) {
    for (;;) {
      if (next_ == nullptr) {
        if (!GetFileInformationByHandleEx(folder_, FileIdBothDirectoryInfo, buffer_, sizeof(buffer_)))
          return false;
        next_ = buffer_;
      }
      const auto& found = *reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(next_);
      next_ = found.NextEntryOffset == 0 ? nullptr : next_ + found.NextEntryOffset;
      entry = {{found.FileName, found.FileNameLength / sizeof(wchar_t)},
               found.FileAttributes,
               static_cast<uint64_t>(found.EndOfFile.QuadPart),
               static_cast<uint64_t>(found.FileId.QuadPart)};
      if (entry.name != L"." && entry.name != L"..") return true;
    }
  }

 private:
  HANDLE folder_;
  const std::byte* next_ = nullptr;
  alignas(FILE_ID_BOTH_DIR_INFO) std::byte buffer_[kListingBytes];
};
using Entry = EntryListing::Entry;

// Opens the entry that has this name in an open folder now; of a link, the link itself (NtCreateFile).
// The name comes from a listing, so it contains no separator. Notifies the holder of an oplock on the
// entry, but does not wait: the holder need never answer. If the result is empty, GetLastError() holds
// the reason.
FileHandle OpenEntry(HANDLE folder, std::wstring_view name, ACCESS_MASK access, ULONG share, ULONG options) {
  UNICODE_STRING text = {};
  text.Buffer = const_cast<wchar_t*>(name.data());
  text.Length = text.MaximumLength = static_cast<USHORT>(name.size() * sizeof(wchar_t));
  OBJECT_ATTRIBUTES object = {};
  object.Length = sizeof(object);
  object.RootDirectory = folder;
  object.ObjectName = &text;
  // The folder may have been turned into a link in place. Opening must then fail, even on a file system
  // that would follow it. The first versions of Windows 10 do not know the attribute.
  static std::atomic<ULONG> attributes = OBJ_DONT_REPARSE;
  object.Attributes = attributes;
  IO_STATUS_BLOCK outcome = {};
  HANDLE opened = nullptr;
  const auto open = [&] {
    return NtCreateFile(&opened, access, &object, &outcome, nullptr, 0, share, FILE_OPEN,
                        options | FILE_OPEN_REPARSE_POINT | FILE_COMPLETE_IF_OPLOCKED, nullptr, 0);
  };
  NTSTATUS status = open();
  if (status == kStatusInvalidParameter && object.Attributes != 0) {
    object.Attributes = 0;
    status = open();
    if (status >= 0) attributes = 0;
  }
  if (status == kStatusOplockBreakInProgress) {
    CloseHandle(opened);
    status = kStatusSharingViolation;
  }
  if (status >= 0) return FileHandle(opened);
  SetLastError(RtlNtStatusToDosError(status));
  return {};
}

// Returns the number of an open entry in its file system, as listings have it (FileInternalInformation).
// Returns 0 if the file system has none. GetFileInformationByHandle would look at the volume, too.
uint64_t IdOf(HANDLE entry) {
  IO_STATUS_BLOCK outcome = {};
  uint64_t id = 0;
  const NTSTATUS status = NtQueryInformationFile(entry, &outcome, &id, sizeof(id), kFileInternalInformation);
  return status >= 0 ? id : 0;
}

// Opens a listed folder. Returns nothing if it has since become a link or another folder. An entry
// without a number comes from a file system that has none.
FileHandle OpenListedFolder(HANDLE parent, const Entry& entry, ACCESS_MASK access, ULONG share) {
  FileHandle folder = OpenEntry(parent, entry.name, kList | access, share,
                                FILE_DIRECTORY_FILE | FILE_SYNCHRONOUS_IO_NONALERT);
  FILE_BASIC_INFO found = {};
  if (folder && (!GetFileInformationByHandleEx(folder.get(), FileBasicInfo, &found, sizeof(found)) ||
                 IsReparsePoint(found.FileAttributes) || (entry.id != 0 && entry.id != IdOf(folder.get()))))
    folder.reset();
  return folder;
}

// Returns the rights needed to delete an entry. Where the system cannot ignore the read-only attribute,
// it must be removed first.
ACCESS_MASK DeleteAccess(DWORD attributes) {
  return IsReadOnly(attributes) ? DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES : DELETE;
}

bool SetAttributes(HANDLE entry, DWORD attributes) {
  FILE_BASIC_INFO information = {};  // times of 0 stay unchanged
  information.FileAttributes = attributes;
  return SetFileInformationByHandle(entry, FileBasicInfo, &information, sizeof(information));
}

// Deletes the entry of a handle opened with DeleteAccess. Restores the read-only attribute if the entry
// stays.
bool DeleteByHandle(HANDLE entry, DWORD attributes) {
  FILE_DISPOSITION_INFO_EX extended = {FILE_DISPOSITION_FLAG_DELETE | FILE_DISPOSITION_FLAG_POSIX_SEMANTICS |
                                       FILE_DISPOSITION_FLAG_IGNORE_READONLY_ATTRIBUTE};
  if (SetFileInformationByHandle(entry, kFileDispositionInfoEx, &extended, sizeof(extended))) return true;
  // Windows before 10 version 1809 does not know these flags, and file systems other than NTFS may not
  // either.
  FILE_DISPOSITION_INFO plain = {TRUE};
  if (SetFileInformationByHandle(entry, FileDispositionInfo, &plain, sizeof(plain))) return true;
  if (!IsReadOnly(attributes)) return false;
  const DWORD writable = attributes & ~DWORD{FILE_ATTRIBUTE_READONLY};
  if (!SetAttributes(entry, writable != 0 ? writable : DWORD{FILE_ATTRIBUTE_NORMAL})) return false;
  if (SetFileInformationByHandle(entry, FileDispositionInfo, &plain, sizeof(plain))) return true;
  SetAttributes(entry, attributes);
  return false;
}

// Deletes a file or a link of either kind.
void DeleteEntry(HANDLE folder, const Entry& entry) {
  const FileHandle opened = OpenEntry(folder, entry.name, DeleteAccess(entry.attributes), kShareAll, 0);
  if (opened) DeleteByHandle(opened.get(), entry.attributes);
}

FileHandle OpenByPath(const std::wstring& folder) {
  const std::wstring path = ExtendedFolder(folder);
  if (path.empty()) return {};
  return FileHandle(CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// Opens the folder of this name, in any case. Sets ERROR_FILE_NOT_FOUND if there is none, and another
// error for a file or a link or if the parent cannot be listed to its end.
FileHandle OpenNamedFolder(HANDLE parent, std::wstring_view name, ACCESS_MASK access, ULONG share) {
  EntryListing listing(parent);
  Entry entry;
  while (listing.Next(entry)) {
    if (!IsSamePath(entry.name, name)) continue;
    if (IsFolder(entry.attributes) && !IsReparsePoint(entry.attributes))
      return OpenListedFolder(parent, entry, access, share);
    SetLastError(ERROR_DIRECTORY);
    return {};
  }
  if (GetLastError() == ERROR_NO_MORE_FILES) SetLastError(ERROR_FILE_NOT_FOUND);
  return {};
}

// Opens a folder below a drive one name at a time. `access` applies to the last one.
FileHandle OpenWithoutLinks(std::wstring_view path, ACCESS_MASK access) {
  SetLastError(ERROR_BAD_PATHNAME);
  while (path.ends_with(L'\\')) path.remove_suffix(1);
  if (path.size() < 4 || path.substr(1, 2) != L":\\") return {};
  FileHandle folder = OpenByPath(std::wstring(path.substr(0, 3)));
  path.remove_prefix(3);
  while (folder) {
    const size_t separator = path.find(L'\\');
    const std::wstring_view name = path.substr(0, separator);
    if (separator == path.npos) return OpenNamedFolder(folder.get(), name, access, kHold);
    folder = OpenNamedFolder(folder.get(), name, 0, kShareAll);
    path.remove_prefix(separator + 1);
  }
  return folder;
}

FileHandle OpenFolder(const std::wstring& folder, PathLinks links) {
  return links == PathLinks::kFollow ? OpenByPath(folder) : OpenWithoutLinks(folder, 0);
}

thread_local std::atomic<uint64_t> own_steps;

// A folder that is being walked.
struct Level {
  Level(FileHandle opened, DWORD listed_attributes)
      : folder(std::move(opened)), attributes(listed_attributes), listing(folder.get()) {}

  FileHandle folder;
  DWORD attributes;
  EntryListing listing;
};

// Calls `on_file(folder, entry)` for everything but real folders. Opens those with `open(folder, entry)`
// and walks them if that returns a handle, then calls `on_end(level)`, but not for the root. Not
// recursive, because the deepest possible tree would not fit on a thread's stack. Stops if `keep_going()`
// returns false, which it asks before each entry.
template <typename KeepGoing, typename OnFile, typename Open, typename OnEnd>
void Walk(FileHandle root, KeepGoing keep_going, OnFile on_file, Open open, OnEnd on_end) {
  std::atomic<uint64_t>& steps = own_steps;
  std::stack<Level> levels;
  if (root) levels.emplace(std::move(root), DWORD{0});
  for (; !levels.empty() && keep_going(); ++steps) {
    Level& level = levels.top();
    Entry entry;
    if (!level.listing.Next(entry)) {
      if (levels.size() > 1) on_end(level);
      levels.pop();
    } else if (!IsFolder(entry.attributes) || IsReparsePoint(entry.attributes)) {
      on_file(level.folder.get(), entry);
    } else if (levels.size() < kMaxLevels) {
      if (FileHandle inner = open(level.folder.get(), entry))
        levels.emplace(std::move(inner), entry.attributes);
    }
  }
}

void ClearContents(FileHandle root) {
  const auto open = [](HANDLE folder, const Entry& entry) {
    return OpenListedFolder(folder, entry, DeleteAccess(entry.attributes), kHold);
  };
  Walk(
      std::move(root), [] { return true; }, DeleteEntry, open,
      [](const Level& level) { DeleteByHandle(level.folder.get(), level.attributes); });
}

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

uint64_t DirectorySize(const std::wstring& folder, PathLinks links, DWORD limit_ms) {
  const ULONGLONG begin = GetTickCount64();
  uint64_t size_bytes = 0;
  Walk(
      OpenFolder(folder, links), [&] { return limit_ms == INFINITE || GetTickCount64() - begin < limit_ms; },
      [&](HANDLE, const Entry& entry) {
        if (!IsFolder(entry.attributes)) size_bytes += entry.size_bytes;
      },
      [](HANDLE parent, const Entry& entry) { return OpenListedFolder(parent, entry, 0, kShareAll); },
      [](const Level&) {});
  return size_bytes;
}

void ClearDirectoryContents(const std::wstring& folder, PathLinks links) {
  ClearContents(OpenFolder(folder, links));
}

bool RemoveFolder(const std::wstring& folder) {
  constexpr DWORD kWritable = FILE_ATTRIBUTE_READONLY;  // asks for the rights to remove the attribute
  const FileHandle held = OpenWithoutLinks(folder, DeleteAccess(kWritable));
  if (!held) return GetLastError() == ERROR_FILE_NOT_FOUND;
  FILE_BASIC_INFO information = {};
  if (!GetFileInformationByHandleEx(held.get(), FileBasicInfo, &information, sizeof(information)))
    return false;
  HANDLE walked = nullptr;
  if (!DuplicateHandle(GetCurrentProcess(), held.get(), GetCurrentProcess(), &walked, 0, FALSE,
                       DUPLICATE_SAME_ACCESS))
    return false;
  ClearContents(FileHandle(walked));
  return DeleteByHandle(held.get(), information.FileAttributes);
}

const std::atomic<uint64_t>& WalkSteps() {
  return own_steps;
}
