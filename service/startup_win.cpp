#include "base/handle_win.h"
#include "service/topics_win.h"
#include "startup/startup_items.h"

bool SwitchMachineStartup(const std::wstring& name, bool enable) {
  RegistryKey run;
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\CurrentVersion\\Run", 0,
                       KEY_QUERY_VALUE, run.put()) == ERROR_SUCCESS &&
         RegQueryValueExW(run.get(), name.c_str(), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
         SetStartupApproved(L"HKLM", name, enable);
}
