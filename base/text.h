#pragma once

#include <string>
#include <string_view>

// Convert between UTF-8 and UTF-16 (MultiByteToWideChar and WideCharToMultiByte, code page 65001, flags
// 0). Anything that cannot be converted becomes U+FFFD. Empty text stays empty.
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);

// Returns a console tool's output as UTF-8. Valid UTF-8 is kept; anything else is converted from the OEM
// code page that hidden consoles use (GetOEMCP). The result is always valid UTF-8. Convert whole lines
// or buffers, never a single read.
std::string ConsoleTextToUtf8(std::string_view bytes);

// Returns the text of a file of unknown origin as UTF-8. Valid UTF-8 is kept; anything else is converted
// from the system's ANSI code page (GetACP). The result is always valid UTF-8.
std::string FileTextToUtf8(std::string_view bytes);
