// Stand-in for base/text_win.cpp in Linux test builds, where wchar_t holds a whole code point.
#include <filesystem>
#include <string>

#include "base/text.h"
#include "base/utf8.h"

std::string WideToUtf8(std::wstring_view text) {
  return std::filesystem::path(std::u32string(text.begin(), text.end())).string();
}

std::wstring Utf8ToWide(std::string_view text) {
  const std::u32string wide = IsValidUtf8(text) ? std::filesystem::path(text).u32string() : U"\xFFFD";
  return std::wstring(wide.begin(), wide.end());
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
