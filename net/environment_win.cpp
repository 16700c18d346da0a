#include "net/environment_win.h"

#include "base/handle_win.h"
#include "base/page.h"
#include "base/registry_win.h"
#include "base/reply.h"
#include "base/text.h"
#include "exec/service_pipe_win.h"

namespace {

constexpr wchar_t kUserPath[] = L"Environment";
constexpr wchar_t kSystemPath[] = L"System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr DWORD kNameUnits = 16383;
constexpr DWORD kDataBytes = 32767;
constexpr UINT kBroadcastTimeoutMs = 5000;

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

EnvVariables ReadEnvVariables(HKEY hive, const std::wstring& path) {
  EnvVariables variables;
  for (RegistryValue& value : ReadRegistryValues(hive, path.c_str(), kNameUnits, kDataBytes))
    variables.emplace_back(std::move(value.name), std::move(value.text));
  return variables;
}

bool WriteEnvVariable(HKEY hive, const std::wstring& path, const std::wstring& name,
                      const std::wstring& value, bool is_delete) {
  RegistryKey key;
  if (RegCreateKeyExW(hive, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, key.put(),
                      nullptr) != ERROR_SUCCESS)
    return false;
  const LSTATUS status = is_delete ? DeleteValue(key.get(), name) : SetValue(key.get(), name, value);
  if (status != ERROR_SUCCESS) return false;
  key.reset();
  SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(L"Environment"),
                      SMTO_ABORTIFHUNG, kBroadcastTimeoutMs, nullptr);
  return true;
}

void getEnvVariables(int request_id) {
  PostJsonToJs(BuildEnvVariables(request_id, ReadEnvVariables(HKEY_CURRENT_USER, kUserPath),
                                 ReadEnvVariables(HKEY_LOCAL_MACHINE, kSystemPath)));
}

void saveEnvVariable(int request_id, const std::string& type, const std::string& name,
                     const std::string& value, bool is_delete) {
  const bool success =
      type == "user"
          ? WriteEnvVariable(HKEY_CURRENT_USER, kUserPath, Utf8ToWide(name), Utf8ToWide(value), is_delete)
          : SendServiceCommand("save_system_env",
                               {{"name", name}, {"value", value}, {"is_delete", is_delete}});
  PostJsonToJs(MakeReply("saveEnvVariable", success, request_id).dump());
}
