#include "clean/system_files.h"

#include <windows.h>

#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "base/registry_win.h"
#include "exec/service_pipe.h"

namespace {

// Measures a file even if the system keeps it locked. The page and swap files refuse attribute queries,
// so their size is taken from the directory entry, which does not open them.
SystemFileInfo ReadSystemFile(const wchar_t* path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return {true, SizeBytes(data)};
  if (GetLastError() != ERROR_SHARING_VIOLATION) return {};
  WIN32_FIND_DATAW entry = {};
  const FindHandle find(FindFirstFileW(path, &entry));
  if (!find) return {};
  return {true, SizeBytes(entry)};
}

bool IsHibernationEnabled() {
  const RegistryKey power = OpenKey(HKEY_LOCAL_MACHINE, LR"(SYSTEM\CurrentControlSet\Control\Power)");
  if (!power) return false;
  DWORD value = 0;
  DWORD size_bytes = sizeof(value);
  return RegQueryValueExW(power.get(), L"HibernateEnabled", nullptr, nullptr, reinterpret_cast<BYTE*>(&value),
                          &size_bytes) == ERROR_SUCCESS &&
         value != 0;
}

}  // namespace

void getSystemFilesAdvisor(int request_id) {
  const SystemFiles files = {.hiberfil = ReadSystemFile(LR"(C:\hiberfil.sys)"),
                             .hibernation_enabled = IsHibernationEnabled(),
                             .pagefile = ReadSystemFile(LR"(C:\pagefile.sys)"),
                             .swapfile = ReadSystemFile(LR"(C:\swapfile.sys)")};
  PostReply("getSystemFilesAdvisor", request_id, true, ToJson(files));
}

void setHibernation(int request_id, std::optional<bool> enabled) {
  const bool is_on = enabled.value_or(false);
  const bool success = SendServiceCommand("set_hibernation", {{"enabled", is_on}});
  PostReply("setHibernation", request_id, success, {{"enabled", is_on}});
}
