#pragma once

#include <string>

// Returns the folder of the running executable without a trailing separator (GetModuleFileNameW, 260
// units, cut before the last "\" or "/"; the whole name if there is neither).
std::wstring GetExeDirectory();
