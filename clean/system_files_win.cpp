#include "clean/system_files_win.h"

#include <windows.h>

#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "clean/system_files.h"
#include "exec/service_pipe_win.h"

namespace {

// Files that the system keeps locked are measured too. The page and swap file refuse even the query of their
// attributes; what their folder says of them is asked then, which opens nothing.
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
  RegistryKey power;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, LR"(SYSTEM\CurrentControlSet\Control\Power)", 0, KEY_READ,
                    power.put()) != ERROR_SUCCESS)
    return false;
  DWORD value = 0;
  DWORD size_bytes = sizeof(value);
  return RegQueryValueExW(power.get(), L"HibernateEnabled", nullptr, nullptr, reinterpret_cast<BYTE*>(&value),
                          &size_bytes) == ERROR_SUCCESS &&
         value != 0;
}

}  // namespace

void getSystemFilesAdvisor(int request_id) {
  PostJsonToJs(BuildSystemFilesReply(request_id, {.hiberfil = ReadSystemFile(LR"(C:\hiberfil.sys)"),
                                                  .hibernation_enabled = IsHibernationEnabled(),
                                                  .pagefile = ReadSystemFile(LR"(C:\pagefile.sys)"),
                                                  .swapfile = ReadSystemFile(LR"(C:\swapfile.sys)")}));
}

void setHibernation(int request_id, std::optional<bool> enabled) {
  const bool is_on = enabled.value_or(false);
  const bool success = SendServiceCommand("set_hibernation", {{"enabled", is_on}});
  PostJsonToJs(BuildHibernationReply(request_id, success, is_on));
}
