#pragma once

#include <string>

// Lower-cases A to Z and nothing else.
template <typename Char>
std::basic_string<Char> LowerCase(std::basic_string<Char> text) {
  for (Char& unit : text)
    if (unit >= 'A' && unit <= 'Z') unit = static_cast<Char>(unit - 'A' + 'a');
  return text;
}
