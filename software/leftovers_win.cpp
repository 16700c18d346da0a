#include "software/leftovers.h"

#include <windows.h>

#include "base/environment_variable.h"
#include "base/file_walk_win.h"
#include "base/page.h"
#include "base/registry_win.h"
#include "base/text.h"
#include "exec/service_pipe.h"

namespace {

constexpr const wchar_t* kRootVariables[] = {L"LOCALAPPDATA", L"APPDATA", L"PROGRAMDATA", L"ProgramFiles",
                                             L"ProgramFiles(x86)"};

struct Hive {
  std::string_view prefix;
  HKEY key;
};
const Hive kHives[] = {{kUserHive, HKEY_CURRENT_USER}, {kMachineHive, HKEY_LOCAL_MACHINE}};

std::vector<std::string> ReadRoots() {
  std::vector<std::string> roots;
  for (const wchar_t* variable : kRootVariables) {
    std::string root = WideToUtf8(ReadEnvironmentVariable(variable));
    if (!root.empty()) roots.push_back(std::move(root));
  }
  return roots;
}

bool IsDirectory(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::vector<LeftoverItem> FindItems(const LeftoverNameParts& parts) {
  std::vector<LeftoverItem> items;
  for (std::string& path : LeftoverFolderCandidates(ReadRoots(), parts)) {
    const std::wstring folder = Utf8ToWide(path);
    if (IsDirectory(folder)) items.push_back({"directory", std::move(path), DirectorySize(folder)});
  }
  for (const std::string& path : LeftoverKeyCandidates(parts)) {
    for (const Hive& hive : kHives) {
      if (OpenKey(hive.key, Utf8ToWide(path))) items.push_back({"registry", std::string(hive.prefix) + path});
    }
  }
  return items;
}

bool RemoveEntry(const std::wstring& path, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return DeleteFileW(path.c_str());
  if (RemoveDirectoryW(path.c_str())) return true;
  const DWORD error = GetLastError();
  // Never delete through a link.
  if (error != ERROR_DIR_NOT_EMPTY || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return false;
  ClearDirectoryContents(path);
  return RemoveDirectoryW(path.c_str());
}

bool RemoveDirectoryTree(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const DWORD error = GetLastError();
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);  // a read-only file cannot be deleted
  if (RemoveEntry(path, attributes)) return true;
  SetFileAttributesW(path.c_str(), attributes);
  return false;
}

bool RemoveKeyTree(std::string_view path) {
  for (const Hive& hive : kHives) {
    const std::string_view key = KeyBelow(path, hive.prefix);
    if (!key.empty()) return RegDeleteTreeW(hive.key, Utf8ToWide(key).c_str()) == ERROR_SUCCESS;
  }
  return false;
}

// Removes a folder with its contents (of a link, only the link), or a key with its subkeys, with the
// user's own rights. Returns true if nothing is left of it. A folder that no longer exists counts as
// removed, a key does not.
bool RemoveLeftoverItem(const std::string& type, const std::string& path) {
  if (type == "directory") return RemoveDirectoryTree(Utf8ToWide(path));
  return type == "registry" && RemoveKeyTree(path);
}

bool RemoveItem(const LeftoverItem& item) {
  switch (ChooseLeftoverRemoval(item)) {
    case LeftoverRemoval::kLocal:
      return RemoveLeftoverItem(item.type, item.path);
    case LeftoverRemoval::kServiceFolder:
      return SendServiceCommand("cleanLeftoverPath", {{"path", item.path}});
    case LeftoverRemoval::kServiceKey:
      return SendServiceCommand("cleanHKLMRegistry", {{"subKey", KeyBelow(item.path, kMachineHive)}});
    case LeftoverRemoval::kNone:
      break;
  }
  return false;
}

}  // namespace

void findLeftovers(int request_id, const std::string& id, const std::string& name) {
  const std::vector<LeftoverItem> items = FindItems(SplitLeftoverName(id, name));
  PostReply("findLeftovers", request_id, true, {{"leftovers", ToJson(items)}});
}

void cleanLeftovers(int request_id, const std::vector<nlohmann::json>& items) {
  bool success = true;
  for (const nlohmann::json& item : items) success = RemoveItem(ReadLeftoverItem(item)) && success;
  PostReply("cleanLeftovers", request_id, success);
}
