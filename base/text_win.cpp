#include "base/text.h"

#include <windows.h>

#include <climits>

#include "base/utf8.h"

namespace {

std::wstring BytesToWide(std::string_view bytes, UINT code_page) {
  if (bytes.empty() || bytes.size() > INT_MAX) return {};
  const int size = static_cast<int>(bytes.size());
  std::wstring wide(static_cast<size_t>(MultiByteToWideChar(code_page, 0, bytes.data(), size, nullptr, 0)),
                    L'\0');
  MultiByteToWideChar(code_page, 0, bytes.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

}  // namespace

std::wstring Utf8ToWide(std::string_view text) {
  return BytesToWide(text, CP_UTF8);
}

std::string WideToUtf8(std::wstring_view text) {
  if (text.empty() || text.size() > INT_MAX) return {};
  const int size = static_cast<int>(text.size());
  const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), needed, nullptr, nullptr);
  return narrow;
}

std::string ConsoleTextToUtf8(std::string_view bytes) {
  return IsValidUtf8(bytes) ? std::string(bytes) : WideToUtf8(BytesToWide(bytes, GetOEMCP()));
}

std::string FileTextToUtf8(std::string_view bytes) {
  return IsValidUtf8(bytes) ? std::string(bytes) : WideToUtf8(BytesToWide(bytes, GetACP()));
}
