#pragma once

#include <string>

// Returns the folder of the running executable without a trailing separator (GetModuleFileNameW, at most
// 260 units, cut before the last "\" or "/"). Returns the whole name if it contains neither.
std::wstring GetExeDirectory();
