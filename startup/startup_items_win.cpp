#include "startup/startup_items_win.h"

#include "base/handle_win.h"
#include "base/page.h"
#include "base/registry_win.h"
#include "base/reply.h"
#include "base/text.h"
#include "exec/service_pipe_win.h"

namespace {

constexpr wchar_t kRunPath[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kApprovalPath[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";
constexpr DWORD kNameUnits = 256;
constexpr DWORD kDataBytes = 1024;
constexpr DWORD kApprovalBytes = 256;

}  // namespace

void ReadRunKey(HKEY hive, const std::wstring& path, const std::wstring& scope,
                std::vector<StartupItem>& items) {
  for (RegistryValue& value : ReadRegistryValues(hive, path.c_str(), kNameUnits, kDataBytes)) {
    if (value.text.empty()) continue;
    const std::wstring impact = EstimateImpact(value.text);
    items.push_back({std::move(value.name), std::move(value.text), path, scope, true, impact});
  }
}

void ApplyStartupApproval(std::vector<StartupItem>& items, HKEY hive) {
  RegistryKey key;
  if (RegOpenKeyExW(hive, kApprovalPath, 0, KEY_READ, key.put()) != ERROR_SUCCESS) return;
  const wchar_t* scope = hive == HKEY_CURRENT_USER ? L"HKCU" : L"HKLM";
  for (StartupItem& item : items) {
    if (item.scope != scope) continue;
    BYTE data[kApprovalBytes] = {};
    DWORD size_bytes = sizeof(data);
    DWORD type = REG_NONE;
    if (RegQueryValueExW(key.get(), item.name.c_str(), nullptr, &type, data, &size_bytes) == ERROR_SUCCESS &&
        IsDisabledByApproval(type, {data, size_bytes}))
      item.enabled = false;
  }
}

std::vector<StartupItem> GetStartupItems() {
  std::vector<StartupItem> items;
  ReadRunKey(HKEY_CURRENT_USER, kRunPath, L"HKCU", items);
  ReadRunKey(HKEY_LOCAL_MACHINE, kRunPath, L"HKLM", items);
  ApplyStartupApproval(items, HKEY_CURRENT_USER);
  ApplyStartupApproval(items, HKEY_LOCAL_MACHINE);
  return items;
}

bool SetStartupApproved(const std::wstring& scope, const std::wstring& name, bool enable) {
  const HKEY hive = scope == L"HKCU" ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
  RegistryKey key;
  if (RegOpenKeyExW(hive, kApprovalPath, 0, KEY_QUERY_VALUE | KEY_SET_VALUE, key.put()) != ERROR_SUCCESS)
    return false;
  const ApprovalValue value = MakeApprovalValue(enable);
  RegSetValueExW(key.get(), name.c_str(), 0, REG_BINARY, value.data(), static_cast<DWORD>(value.size()));
  return true;
}

void getStartupItems(int request_id) {
  PostJsonToJs(BuildStartupItems(request_id, GetStartupItems()));
}

void toggleStartupItem(int request_id, const std::string& scope, const std::string& name, bool enabled) {
  bool success = false;
  if (scope == "HKCU") success = SetStartupApproved(L"HKCU", Utf8ToWide(name), enabled);
  if (scope == "HKLM")
    success = SendServiceCommand("toggleHKLMStartup", {{"name", name}, {"enable", enabled}});
  PostJsonToJs(MakeReply("toggleStartupItem", success, request_id).dump());
}
