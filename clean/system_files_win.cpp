#include "clean/system_files_win.h"

#include <windows.h>

#include "base/handle_win.h"
#include "base/page.h"
#include "clean/system_files.h"
#include "exec/service_pipe_win.h"
#include "exec/service_protocol.h"

namespace {

// Nothing is opened, so that files which the system keeps locked are measured too.
SystemFileInfo ReadSystemFile(const wchar_t* path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return {};
  return {true, uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow};
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

void setHibernation(int request_id, bool enabled) {
  const bool success =
      EnsureServiceOrNotify() && ReplySuccess(SendServiceRequest("set_hibernation", {{"enabled", enabled}}));
  PostJsonToJs(BuildHibernationReply(request_id, success, enabled));
}
