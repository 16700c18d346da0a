#pragma once

#include <windows.h>

#include <string>

// Starts a program with an elevation prompt (ShellExecuteExW, verb "runas"); `mask` holds its flags, `show`
// is how the program's window shows itself. Returns false if it did not start, as when the user declines.
bool StartElevated(const std::wstring& path, const wchar_t* parameters, ULONG mask, int show);
