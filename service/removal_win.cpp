#include <windows.h>
#include <knownfolders.h>
#include <shlobj.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>

#include "base/exe_directory.h"
#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/path_names.h"
#include "service/topics_win.h"

extern "C" NTSTATUS NTAPI NtDeleteKey(HANDLE key);

namespace {

constexpr size_t kMaxKeyDepth = 512;  // the registry's own limit on nesting

// Returns true if a process runs from below the folder, or if that cannot be determined.
bool HoldsRunningProgram(const std::wstring& folder) {
  const SnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  if (!snapshot || !Process32FirstW(snapshot.get(), &entry)) return true;
  std::wstring image(32'768, L'\0');
  do {
    const KernelHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, entry.th32ProcessID));
    auto units = static_cast<DWORD>(image.size());
    if (process && QueryFullProcessImageNameW(process.get(), 0, image.data(), &units) &&
        IsSameOrBelow(LongPath(image.substr(0, units)), folder, IsSamePath))
      return true;
  } while (Process32NextW(snapshot.get(), &entry));
  return false;
}

// Opens a key itself, even if it is a link.
RegistryKey OpenKey(HKEY parent, const std::wstring& name, REGSAM access) {
  RegistryKey key;
  RegOpenKeyExW(parent, name.c_str(), REG_OPTION_OPEN_LINK, access | KEY_WOW64_64KEY, key.put());
  return key;
}

bool IsLink(HKEY key) {
  DWORD type = REG_NONE;
  return RegQueryValueExW(key, L"SymbolicLinkValue", nullptr, &type, nullptr, nullptr) == ERROR_SUCCESS &&
         type == REG_LINK;
}

constexpr REGSAM kDeleteAccess = DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE;

bool DeleteKeyTree(HKEY key, size_t depth) {
  if (depth > kMaxKeyDepth) return false;
  if (IsLink(key)) return NtDeleteKey(key) >= 0;
  wchar_t name[256];
  // Deleted keys are no longer listed; skip those that cannot be deleted.
  for (DWORD kept = 0;;) {
    DWORD units = 256;
    if (RegEnumKeyExW(key, kept, name, &units, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    const RegistryKey inner = OpenKey(key, std::wstring(name, units), kDeleteAccess);
    if (!inner || !DeleteKeyTree(inner.get(), depth + 1)) ++kept;
  }
  return NtDeleteKey(key) >= 0;
}

}  // namespace

ProgramFolders FindProgramFolders() {
  ProgramFolders folders = {{}, LongPath(GetExeDirectory())};
  for (const KNOWNFOLDERID& id : {FOLDERID_ProgramFiles, FOLDERID_ProgramFilesX86, FOLDERID_ProgramData}) {
    TaskMemoryString path;
    if (SUCCEEDED(SHGetKnownFolderPath(id, KF_FLAG_DEFAULT, nullptr, path.put())))
      folders.roots.push_back(LongPath(path.get()));
  }
  return folders;
}

bool RemoveLeftoverFolder(const std::wstring& path) {
  return !HoldsRunningProgram(path) && RemoveFolder(path);
}

bool RemoveMachineKey(const std::vector<std::wstring>& names) {
  RegistryKey key;
  for (const std::wstring& name : names) {
    // All threads share the hive's predefined handle, which must not be closed.
    key = OpenKey(key ? key.get() : HKEY_LOCAL_MACHINE, name,
                  &name == &names.back() ? kDeleteAccess : KEY_READ);
    if (!key || IsLink(key.get())) return false;
  }
  return DeleteKeyTree(key.get(), 0);
}
