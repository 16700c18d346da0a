#pragma once

#include <windows.h>

#include <string>

// Starts a program with an elevation prompt (ShellExecuteExW, verb "runas"). `mask` holds the call's
// flags and `show` the program's initial window state. Returns false if it did not start, for example
// because the user declined.
bool StartElevated(const std::wstring& path, const wchar_t* parameters, ULONG mask, int show);
