#pragma once

#include <string>

// Returns the value of an environment variable of this process (GetEnvironmentVariableW), or an empty
// string if it is missing.
std::wstring ReadEnvironmentVariable(const wchar_t* name);
