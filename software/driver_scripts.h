#pragma once

#include <string>

#include "base/exe_directory.h"

// The two PowerShell scripts that are installed beside the executable.
inline constexpr const wchar_t* kCheckDriversScript = L"check_updates.ps1";
inline constexpr const wchar_t* kUpdateDriverScript = L"update_driver.ps1";

inline std::wstring ScriptPath(const wchar_t* script) {
  return GetExeDirectory() + L"\\" + script;
}

// Returns the command that runs a script with Windows PowerShell under any execution policy.
inline std::wstring ScriptCommand(const wchar_t* script) {
  return L"powershell -NoProfile -ExecutionPolicy Bypass -File \"" + ScriptPath(script) + L"\"";
}
