#pragma once

#include <string>
#include <string_view>

// Returns the path with the long form of each short name (GetLongPathNameW): C:\Users\John Doe for
// C:\USERS\JOHNDO~1. Returns a path that cannot be looked up unchanged.
std::wstring LongPath(const std::wstring& path);

// Returns true if two paths have the same names in any case, as file systems compare them
// (CompareStringOrdinal).
bool IsSamePath(std::wstring_view a, std::wstring_view b);
