#pragma once

#include <string>
#include <string_view>

// The path with the long form of each short name (GetLongPathNameW): C:\Users\John Doe for C:\USERS\JOHNDO~1.
// A path that cannot be looked up stays as it is.
std::wstring LongPath(const std::wstring& path);

// Whether two paths have the same names in any case, as file systems compare them (CompareStringOrdinal).
bool IsSamePath(std::wstring_view a, std::wstring_view b);
