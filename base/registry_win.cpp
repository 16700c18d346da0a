#include "base/registry_win.h"

RegistryKey OpenKey(HKEY root, const std::wstring& path, REGSAM access) {
  RegistryKey key;
  if (RegOpenKeyExW(root, path.c_str(), 0, access, key.put()) != ERROR_SUCCESS)
    static_cast<void>(key.release());
  return key;
}

std::wstring ReadRegistryString(HKEY root, const wchar_t* path, const wchar_t* value) {
  const RegistryKey key = OpenKey(root, path);
  if (!key) return L"Unknown";
  // One unit more than the system may fill, because the data need not end with a NUL.
  wchar_t buffer[512 + 1] = {};
  DWORD size_bytes = 1024;
  if (RegQueryValueExW(key.get(), value, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer), &size_bytes) !=
      ERROR_SUCCESS)
    return L"Unknown";
  return buffer;
}

std::vector<RegistryValue> ReadRegistryValues(HKEY root, const wchar_t* path, DWORD name_units,
                                              DWORD data_bytes) {
  std::vector<RegistryValue> values;
  const RegistryKey key = OpenKey(root, path);
  if (!key) return values;
  std::vector<wchar_t> name(name_units);
  std::vector<wchar_t> data(data_bytes / sizeof(wchar_t) + 1);
  for (DWORD index = 0;; ++index) {
    DWORD name_length = name_units;
    DWORD size_bytes = data_bytes;
    DWORD type = REG_NONE;
    const LSTATUS status = RegEnumValueW(key.get(), index, name.data(), &name_length, nullptr, &type,
                                         reinterpret_cast<BYTE*>(data.data()), &size_bytes);
    if (status == ERROR_MORE_DATA) continue;
    if (status != ERROR_SUCCESS) return values;  // ERROR_NO_MORE_ITEMS, or the key was deleted
    RegistryValue& value = values.emplace_back();
    value.name.assign(name.data(), name_length);
    value.type = type;
    if (type != REG_SZ && type != REG_EXPAND_SZ) continue;
    value.text.assign(data.data(), size_bytes / sizeof(wchar_t));
    if (value.text.ends_with(L'\0')) value.text.pop_back();
  }
}
