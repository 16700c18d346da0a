#include "base/exe_directory.h"

#include <windows.h>

std::wstring GetExeDirectory() {
  wchar_t buffer[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(nullptr, buffer, MAX_PATH);
  std::wstring path(buffer, length);
  const size_t separator = path.find_last_of(L"\\/");
  return separator == path.npos ? path : path.substr(0, separator);
}
