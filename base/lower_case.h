#pragma once

#include <cwctype>
#include <string>

// Lower-cases each unit on its own with towlower in the "C" locale, which this program never leaves: A to Z,
// nothing else.
inline std::wstring LowerCase(std::wstring text) {
  for (wchar_t& unit : text) unit = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(unit)));
  return text;
}
