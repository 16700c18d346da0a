#include "clean/junk_win.h"

#include <windows.h>
#include <shlobj.h>

#include <exception>
#include <optional>

#include "base/exe_directory_win.h"
#include "base/file_walk_win.h"
#include "base/page.h"
#include "exec/service_pipe_win.h"

namespace {

KeptFolders FoldersToKeep() {
  wchar_t path[MAX_PATH] = {};
  KeptFolders kept;
  GetWindowsDirectoryW(path, MAX_PATH);
  kept.windows = path;
  kept.others.push_back(GetExeDirectory());
  const DWORD length = GetEnvironmentVariableW(L"USERPROFILE", path, MAX_PATH);
  if (length > 0 && length < MAX_PATH) kept.others.emplace_back(path);
  return kept;
}

// Nothing when the folder cannot be found.
std::optional<std::wstring> BasePath(JunkBase base) {
  wchar_t path[MAX_PATH] = {};
  switch (base) {
    case JunkBase::kNone:
      return L"";
    case JunkBase::kUserTemp: {
      const DWORD length = GetTempPathW(MAX_PATH, path);
      if (length == 0 || length >= MAX_PATH) return std::nullopt;
      // A short name such as C:\USERS\JOHNDO~1 would not be recognised; a folder that is missing keeps its
      // name.
      wchar_t long_path[MAX_PATH] = {};
      const DWORD long_length = GetLongPathNameW(path, long_path, MAX_PATH);
      const bool is_known = long_length > 0 && long_length < MAX_PATH;
      if (!MayBeEmptied(is_known ? long_path : path, FoldersToKeep())) return std::nullopt;
      return path;
    }
    case JunkBase::kLocalAppData:
      if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, path) != S_OK) return std::nullopt;
      return path;
  }
  return std::nullopt;
}

// Calls `use(path, is_cleaned)` for each folder of a category.
template <typename Use>
void ForEachFolder(const JunkCategory& category, Use use) {
  const std::optional<std::wstring> base = BasePath(category.base);
  if (!base) return;
  for (const JunkFolder& folder : category.folders) use(*base + folder.path, folder.is_cleaned);
}

}  // namespace

JunkSizes MeasureJunkSizes() {
  JunkSizes sizes;
  for (size_t i = 0; i < kJunkCategoryCount; ++i)
    ForEachFolder(kJunkCategories[i],
                  [&](const std::wstring& path, bool) { sizes.bytes[i] += DirectorySize(path); });
  return sizes;
}

bool CleanJunkCategories(const JunkFlags& selected) try {
  for (size_t i = 0; i < kJunkCategoryCount; ++i) {
    if (!selected[i]) continue;
    ForEachFolder(kJunkCategories[i], [](const std::wstring& path, bool is_cleaned) {
      if (is_cleaned) ClearDirectoryContents(path);
    });
  }
  return true;
} catch (const std::exception&) {
  return false;
}

void getJunk(int request_id) {
  JunkSizes sizes = MeasureJunkSizes();
  if (EnsureServiceOrNotify()) RaiseToServiceSizes(SendServiceRequest("getJunkSizes", nullptr), sizes);
  PostJsonToJs(BuildJunkReply("junk", request_id, sizes));
}

void cleanJunk(const JunkSelection& selection) {
  // Whether the service or this program could delete all of it shows in the sizes.
  if (IsServiceRunning())
    SendServiceRequest("cleanJunk", BuildCleanRequest(selection.flags));
  else
    CleanJunkCategories(selection.flags);
  PostJsonToJs(BuildJunkReply("cleanJunk", selection.request_id, MeasureJunkSizes()));
}
