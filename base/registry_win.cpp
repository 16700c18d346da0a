#include "base/registry_win.h"

#include "base/handle_win.h"

std::wstring ReadRegistryString(HKEY root, const wchar_t* path, const wchar_t* value) {
  RegistryKey key;
  if (RegOpenKeyExW(root, path, 0, KEY_READ, key.put()) != ERROR_SUCCESS) return L"Unknown";
  // One more unit than the system may fill: the data need not end with a NUL.
  wchar_t buffer[512 + 1] = {};
  DWORD size_bytes = 1024;
  if (RegQueryValueExW(key.get(), value, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer), &size_bytes) !=
      ERROR_SUCCESS)
    return L"Unknown";
  return buffer;
}
