#include "clean/junk.h"

#include <windows.h>
#include <shlobj.h>

#include <exception>
#include <optional>

#include "base/environment_variable.h"
#include "base/exe_directory.h"
#include "base/file_walk_win.h"
#include "base/page.h"
#include "base/path_names.h"
#include "exec/service_pipe.h"

namespace {

KeptFolders FoldersToKeep() {
  wchar_t path[MAX_PATH] = {};
  KeptFolders kept;
  GetWindowsDirectoryW(path, MAX_PATH);
  kept.windows = path;
  kept.others.push_back(LongPath(GetExeDirectory()));
  const std::wstring named = ReadEnvironmentVariable(L"USERPROFILE");
  if (!named.empty()) kept.others.push_back(LongPath(named));
  TaskMemoryString profile;  // does not depend on USERPROFILE
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_Profile, 0, nullptr, profile.put())))
    kept.others.push_back(LongPath(profile.get()));
  return kept;
}

// Returns an empty path if the system names none.
std::wstring UserTempPath() {
  wchar_t path[MAX_PATH] = {};
  const DWORD length = GetTempPathW(MAX_PATH, path);
  return length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

bool IsKept(const JunkCategory& category) {
  return category.base == JunkBase::kUserTemp &&
         !MayBeEmptied(LongPath(UserTempPath()), FoldersToKeep(), IsSamePath);
}

// Returns nothing if the folder cannot be found.
std::optional<std::wstring> BasePath(JunkBase base) {
  wchar_t path[MAX_PATH] = {};
  switch (base) {
    case JunkBase::kNone:
      return std::wstring();
    case JunkBase::kUserTemp: {
      std::wstring temp = UserTempPath();
      if (temp.empty()) return std::nullopt;
      return temp;
    }
    case JunkBase::kLocalAppData:
      if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, path) != S_OK) return std::nullopt;
      return path;
  }
  return std::nullopt;
}

// Calls `use(path, is_cleaned)` for each folder of a category, unless the category is kept.
template <typename Use>
void ForEachFolder(const JunkCategory& category, Use use) {
  if (IsKept(category)) return;
  const std::optional<std::wstring> base = BasePath(category.base);
  if (!base) return;
  for (const JunkFolder& folder : category.folders) use(*base + folder.path, folder.is_cleaned);
}

}  // namespace

JunkSizes MeasureJunkSizes() {
  JunkSizes sizes;
  for (size_t i = 0; i < kJunkCategoryCount; ++i) {
    sizes.kept[i] = IsKept(kJunkCategories[i]);
    ForEachFolder(kJunkCategories[i],
                  [&](const std::wstring& path, bool) { sizes.bytes[i] += DirectorySize(path); });
  }
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
  // The outcome is not checked: the sizes measured below show what is left.
  if (IsServiceRunning())
    SendServiceRequest("cleanJunk", BuildCleanRequest(selection.flags));
  else
    CleanJunkCategories(selection.flags);
  PostJsonToJs(BuildJunkReply("cleanJunk", selection.request_id, MeasureJunkSizes()));
}
