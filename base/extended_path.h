#pragma once

#include <string>
#include <string_view>

// The "\\?\" form of an absolute path ("C:\x", "\\server\share\x"): its names are taken literally and may be
// longer than 260 units, end in dots or blanks or be a device's. A path that already has a "\\?\" or "\\.\"
// prefix stays as it is.
std::wstring ExtendedPath(std::wstring_view absolute_path);
