#pragma once

#include <string>

// Folder of the running executable without a trailing separator (GetModuleFileNameW, 260 units, cut before
// the last "\" or
// "/"; the whole name when there is neither).
std::wstring GetExeDirectory();
