#pragma once

#include <string>
#include <string_view>

// Returns the "\\?\" form of an absolute path ("C:\x", "\\server\share\x"). Windows takes the names in
// such a path literally: they may exceed 260 units, end in dots or spaces, or be the name of a device. A
// path that already starts with "\\?\" or "\\.\" is returned unchanged.
std::wstring ExtendedPath(std::wstring_view absolute_path);
