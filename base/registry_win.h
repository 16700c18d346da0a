#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "base/handle_win.h"

// Opens a key below `root` (RegOpenKeyExW). Returns an empty handle on failure.
RegistryKey OpenKey(HKEY root, const std::wstring& path, REGSAM access = KEY_READ);

// Returns the text of a registry value up to its first NUL, read with KEY_READ into a 1024-byte buffer
// (RegOpenKeyExW, RegQueryValueExW). The value's type is not checked. Returns "Unknown" if the key
// cannot be opened or the value cannot be read or is longer.
std::wstring ReadRegistryString(HKEY root, const wchar_t* path, const wchar_t* value);

struct RegistryValue {
  std::wstring name;
  DWORD type = REG_NONE;
  // Set for REG_SZ and REG_EXPAND_SZ: unexpanded, without one final NUL. Empty for any other type.
  std::wstring text;
};

// Returns the values of a key in the registry's order (RegOpenKeyExW with KEY_READ, RegEnumValueW), none
// if the key cannot be opened. Skips values that do not fit into buffers of `name_units` (NUL included)
// and `data_bytes`.
std::vector<RegistryValue> ReadRegistryValues(HKEY root, const wchar_t* path, DWORD name_units,
                                              DWORD data_bytes);
