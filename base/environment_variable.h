#pragma once

#include <string>

// Returns the value of an environment variable of this process (GetEnvironmentVariableW),
// empty if it is missing.
std::wstring ReadEnvironmentVariable(const wchar_t* name);
