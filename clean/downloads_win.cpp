#include "clean/downloads.h"

#include <windows.h>
#include <knownfolders.h>
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

#include "base/environment_variable.h"
#include "base/file_time_win.h"
#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"

namespace {

// Returns the folder, or an empty path if there is none.
std::wstring DownloadsFolder() {
  TaskMemoryString known;
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_Downloads, 0, nullptr, known.put()))) return known.get();
  const std::wstring profile = ReadEnvironmentVariable(L"USERPROFILE");
  return profile.empty() ? profile : profile + L"\\Downloads";
}

// Returns true for a file itself: no folder, and no link to another place. Files that the system
// compresses or keeps in a cloud store are reparse points too, but their tags do not name another file.
bool IsRegularFile(const WIN32_FIND_DATAW& entry) {
  if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
  return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 ||
         !IsReparseTagNameSurrogate(entry.dwReserved0);
}

// The shell's copy hooks and the Recycle Bin are COM objects that need a single-threaded apartment.
class ComApartment {
 public:
  ComApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
  ~ComApartment() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  HRESULT result_;
};

// Returns true if the path names exactly one file and nothing else. The shell changes some names before
// it acts: it drops trailing dots and spaces, and it deletes relative paths permanently instead of
// recycling them.
bool NamesItself(const std::wstring& path) {
  wchar_t full[32768];
  const DWORD length = GetFullPathNameW(path.c_str(), 32768, full, nullptr);
  return length > 0 && path == std::wstring_view(full, length);
}

bool MoveToRecycleBin(const std::wstring& path) {
  if (!NamesItself(path)) return false;
  // pFrom is a list of strings that ends with an empty one.
  const std::wstring list = path + L'\0';
  SHFILEOPSTRUCTW operation = {};
  operation.wFunc = FO_DELETE;
  operation.pFrom = list.c_str();
  operation.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_SILENT;
  return SHFileOperationW(&operation) == 0 && !operation.fAnyOperationsAborted;
}

}  // namespace

void getDownloadsJunk(int request_id) {
  FILETIME now = {};
  GetSystemTimeAsFileTime(&now);
  const std::wstring folder = DownloadsFolder();
  std::vector<DownloadJunkItem> items;
  FolderListing listing(folder);
  while (const WIN32_FIND_DATAW* entry = listing.Next()) {
    if (!IsRegularFile(*entry)) continue;
    const DownloadFile file = {entry->cFileName, SizeBytes(*entry), Ticks(entry->ftLastWriteTime)};
    if (auto item = ReviewDownload(folder, file, Ticks(now))) items.push_back(std::move(*item));
  }
  PostReply("getDownloadsJunk", request_id, true, ToJson(items));
}

void deleteSpecificFiles(int request_id, const std::vector<std::string>& paths) {
  const ComApartment apartment;
  size_t deleted_count = 0;
  for (const std::string& path : paths)
    if (MoveToRecycleBin(Utf8ToWide(path))) ++deleted_count;
  PostReply("deleteSpecificFiles", request_id, deleted_count > 0, {{"deletedCount", deleted_count}});
}
