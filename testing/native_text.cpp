// Stand-in for base/text_win.cpp in Linux test builds, where wchar_t holds a whole code point.
#include <string>

#include "base/text.h"
#include "base/utf8.h"

std::string WideToUtf8(std::wstring_view text) {
  std::string utf8;
  auto put = [&](unsigned byte) { utf8 += static_cast<char>(byte); };
  for (const wchar_t unit : text) {
    const auto c = static_cast<unsigned>(unit);
    if (c < 0x80) {
      put(c);
    } else if (c < 0x800) {
      put(0xC0 | c >> 6), put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      put(0xE0 | c >> 12), put(0x80 | (c >> 6 & 0x3F)), put(0x80 | (c & 0x3F));
    } else {
      put(0xF0 | c >> 18), put(0x80 | (c >> 12 & 0x3F)), put(0x80 | (c >> 6 & 0x3F)), put(0x80 | (c & 0x3F));
    }
  }
  return utf8;
}

std::wstring Utf8ToWide(std::string_view text) {
  if (!IsValidUtf8(text)) return L"\xFFFD";
  std::wstring wide;
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned c = length == 1 ? lead : lead & (0xFFu >> (length + 1));
    for (size_t k = 1; k < length; ++k) c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
    wide += static_cast<wchar_t>(c);
    i += length;
  }
  return wide;
}

std::string ConsoleTextToUtf8(std::string_view bytes) {
  if (IsValidUtf8(bytes)) return std::string(bytes);
  std::wstring wide;
  for (const char byte : bytes) wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return WideToUtf8(wide);
}

std::string FileTextToUtf8(std::string_view bytes) {
  return ConsoleTextToUtf8(bytes);
}
