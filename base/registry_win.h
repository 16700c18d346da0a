#pragma once

#include <windows.h>

#include <string>

// Text of a registry value, up to its first NUL, read with KEY_READ into a 1024-byte buffer (RegOpenKeyExW,
// RegQueryValueExW). The value's type is not checked. "Unknown" when the key cannot be opened or the value
// cannot be read, also when it is longer.
std::wstring ReadRegistryString(HKEY root, const wchar_t* path, const wchar_t* value);
