#pragma once

#include <string>
#include <string_view>

// Oldest browser runtime that has the interfaces the program calls.
inline constexpr wchar_t kOldestBrowserVersion[] = L"86.0.616.0";

// Path of the client library in an installed runtime's folder, whose last component is the version:
//   C:\Program Files (x86)\Microsoft\EdgeWebView\Application\131.0.2903.86
// Empty when the folder is relative, or its last component is no version of four numbers or an older one than
// kOldestBrowserVersion.
std::wstring ClientLibraryPath(std::wstring_view runtime_folder);
