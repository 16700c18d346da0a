#include "net/environment_win.h"

#include "base/handle_win.h"
#include "base/page.h"
#include "base/registry_win.h"
#include "base/text.h"
#include "exec/service_pipe.h"

namespace {

constexpr wchar_t kUserPath[] = L"Environment";
constexpr wchar_t kSystemPath[] = LR"(System\CurrentControlSet\Control\Session Manager\Environment)";
constexpr DWORD kNameUnits = 16383;
constexpr DWORD kDataBytes = 32767;
constexpr UINT kBroadcastTimeoutMs = 5000;

nlohmann::json ReadEnvVariables(HKEY hive, const wchar_t* path) {
  nlohmann::json variables = nlohmann::json::object();
  for (const RegistryValue& value : ReadRegistryValues(hive, path, kNameUnits, kDataBytes))
    variables[WideToUtf8(value.name)] = WideToUtf8(value.text);
  return variables;
}

LSTATUS SetValue(HKEY key, const std::wstring& name, const std::wstring& value) {
  const auto size_bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  return RegSetValueExW(key, name.c_str(), 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        size_bytes);
}

LSTATUS DeleteValue(HKEY key, const std::wstring& name) {
  const LSTATUS status = RegDeleteValueW(key, name.c_str());
  return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

}  // namespace

bool WriteEnvVariable(HKEY hive, const std::wstring& path, const std::wstring& name,
                      const std::wstring& value, bool is_delete) {
  RegistryKey key;
  if (RegCreateKeyExW(hive, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, key.put(),
                      nullptr) != ERROR_SUCCESS)
    return false;
  const LSTATUS status = is_delete ? DeleteValue(key.get(), name) : SetValue(key.get(), name, value);
  if (status != ERROR_SUCCESS) return false;
  key.reset();
  NotifyEnvironmentChanged();
  return true;
}

void NotifyEnvironmentChanged() {
  SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(L"Environment"),
                      SMTO_ABORTIFHUNG, kBroadcastTimeoutMs, nullptr);
}

void getEnvVariables(int request_id) {
  PostReply("getEnvVariables", request_id, true,
            {{"user", ReadEnvVariables(HKEY_CURRENT_USER, kUserPath)},
             {"system", ReadEnvVariables(HKEY_LOCAL_MACHINE, kSystemPath)}});
}

void saveEnvVariable(int request_id, const std::string& type, const std::string& name,
                     const std::string& value, bool is_delete) {
  const bool is_own = type == "user";
  const bool success =
      is_own ? WriteEnvVariable(HKEY_CURRENT_USER, kUserPath, Utf8ToWide(name), Utf8ToWide(value), is_delete)
             : SendServiceCommand("save_system_env",
                                  {{"name", name}, {"value", value}, {"is_delete", is_delete}});
  // The service's own notification stays in its session, which has none of the user's windows.
  if (success && !is_own) NotifyEnvironmentChanged();
  PostReply("saveEnvVariable", request_id, success);
}
