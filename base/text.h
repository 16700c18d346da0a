#pragma once

#include <string>
#include <string_view>

// UTF-8 <-> UTF-16 by MultiByteToWideChar and WideCharToMultiByte (code page 65001, flags 0): what cannot be
// converted becomes U+FFFD. Empty gives empty.
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);

// Text that a console tool wrote, as UTF-8: valid UTF-8 stays as it is, anything else is converted from the
// OEM code page that hidden consoles use (GetOEMCP). The result is always valid UTF-8. Convert whole lines or
// buffers, never a read chunk.
std::string ConsoleTextToUtf8(std::string_view bytes);

// Text of a file of unknown origin, as UTF-8: valid UTF-8 stays as it is, anything else is converted from the
// system's ANSI code page (GetACP). The result is always valid UTF-8.
std::string FileTextToUtf8(std::string_view bytes);
