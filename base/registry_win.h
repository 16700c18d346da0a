#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "base/handle_win.h"

// Opens a key below `root` (RegOpenKeyExW). The result is empty if that fails.
RegistryKey OpenKey(HKEY root, const std::wstring& path, REGSAM access = KEY_READ);

// Text of a registry value, up to its first NUL, read with KEY_READ into a 1024-byte buffer (RegOpenKeyExW,
// RegQueryValueExW). The value's type is not checked. "Unknown" when the key cannot be opened or the value
// cannot be read, also when it is longer.
std::wstring ReadRegistryString(HKEY root, const wchar_t* path, const wchar_t* value);

struct RegistryValue {
  std::wstring name;
  DWORD type = REG_NONE;
  // Of REG_SZ and REG_EXPAND_SZ, unexpanded, less one NUL at its end; empty for any other type.
  std::wstring text;
};

// Values of a key in the registry's order, opened with KEY_READ (RegOpenKeyExW, RegEnumValueW);
// none when it cannot be opened. Values that do not fit into buffers of `name_units` (NUL included)
// and `data_bytes` are left out.
std::vector<RegistryValue> ReadRegistryValues(HKEY root, const wchar_t* path, DWORD name_units,
                                              DWORD data_bytes);
