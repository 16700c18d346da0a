#include "startup/startup_items.h"

#include <windows.h>

#include <utility>

#include "base/page.h"
#include "base/registry_win.h"
#include "base/text.h"
#include "exec/service_pipe.h"

namespace {

constexpr wchar_t kRunPath[] = LR"(Software\Microsoft\Windows\CurrentVersion\Run)";
constexpr wchar_t kApprovalPath[] =
    LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\StartupApproved\Run)";
constexpr DWORD kNameUnits = 256;
constexpr DWORD kDataBytes = 1024;
constexpr DWORD kApprovalBytes = 256;

// Appends the items of one "Run" key.
void ReadRunKey(HKEY hive, const wchar_t* scope, std::vector<StartupItem>& items) {
  for (RegistryValue& value : ReadRegistryValues(hive, kRunPath, kNameUnits, kDataBytes)) {
    if (value.text.empty()) continue;
    const std::wstring impact = EstimateImpact(value.text);
    items.push_back({std::move(value.name), std::move(value.text), kRunPath, scope, true, impact});
  }
}

// Disables the items of the hive's scope that its approval list disables.
void ApplyStartupApproval(std::vector<StartupItem>& items, HKEY hive) {
  const RegistryKey key = OpenKey(hive, kApprovalPath);
  if (!key) return;
  const wchar_t* scope = hive == HKEY_CURRENT_USER ? L"HKCU" : L"HKLM";
  for (StartupItem& item : items) {
    if (item.scope != scope) continue;
    BYTE data[kApprovalBytes] = {};
    DWORD size_bytes = sizeof(data);
    DWORD type = REG_NONE;
    if (RegQueryValueExW(key.get(), item.name.c_str(), nullptr, &type, data, &size_bytes) == ERROR_SUCCESS &&
        IsDisabledByApproval(type, std::span(data, size_bytes)))
      item.enabled = false;
  }
}

std::vector<StartupItem> GetStartupItems() {
  std::vector<StartupItem> items;
  ReadRunKey(HKEY_CURRENT_USER, L"HKCU", items);
  ReadRunKey(HKEY_LOCAL_MACHINE, L"HKLM", items);
  ApplyStartupApproval(items, HKEY_CURRENT_USER);
  ApplyStartupApproval(items, HKEY_LOCAL_MACHINE);
  return items;
}

}  // namespace

bool SetStartupApproved(const std::wstring& scope, const std::wstring& name, bool enable) {
  const HKEY hive = scope == L"HKCU" ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
  const RegistryKey key = OpenKey(hive, kApprovalPath, KEY_QUERY_VALUE | KEY_SET_VALUE);
  if (!key) return false;
  const ApprovalValue value = MakeApprovalValue(enable);
  RegSetValueExW(key.get(), name.c_str(), 0, REG_BINARY, value.data(), static_cast<DWORD>(value.size()));
  return true;
}

void getStartupItems(int request_id) {
  PostReply("startup", request_id, true, {{"items", ToJson(GetStartupItems())}});
}

void toggleStartupItem(int request_id, const std::string& scope, const std::string& name, bool enabled) {
  bool success = false;
  if (scope == "HKCU") success = SetStartupApproved(L"HKCU", Utf8ToWide(name), enabled);
  if (scope == "HKLM")
    success = SendServiceCommand("toggleHKLMStartup", {{"name", name}, {"enable", enabled}});
  PostReply("toggleStartupItem", request_id, success);
}
