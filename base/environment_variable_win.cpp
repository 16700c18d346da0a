#include "base/environment_variable.h"

#include <windows.h>

std::wstring ReadEnvironmentVariable(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  if (!value.empty())
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}
