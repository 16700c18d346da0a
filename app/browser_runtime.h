#pragma once

#include <string>
#include <string_view>

// The oldest browser runtime that has every interface the program calls.
inline constexpr wchar_t kOldestBrowserVersion[] = L"86.0.616.0";

// Returns the path of the client library in an installed runtime's folder, whose last component is the
// version:
//   C:\Program Files (x86)\Microsoft\EdgeWebView\Application\131.0.2903.86
// Returns an empty string if the folder is relative, or if its last component is not a four-part version
// of at least kOldestBrowserVersion.
std::wstring ClientLibraryPath(std::wstring_view runtime_folder);
