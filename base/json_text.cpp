#include "base/json_text.h"

#include <algorithm>
#include <stdexcept>

namespace {

// Returns the deepest bracket level of valid JSON text.
size_t NestingOf(std::string_view text) {
  size_t depth = 0, deepest = 0;
  bool in_string = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (in_string && c == '\\') {
      ++i;  // skips the escaped character, which may be a quotation mark
    } else if (c == '"') {
      in_string = !in_string;
    } else if (!in_string && (c == '[' || c == '{')) {
      deepest = std::max(deepest, ++depth);
    } else if (!in_string && (c == ']' || c == '}')) {
      --depth;
    }
  }
  return deepest;
}

}  // namespace

nlohmann::json ParseJson(std::string_view text) {
  // Parsing and destroying use no stack per level, so the depth can be checked afterwards. The library's
  // own callback would see it earlier, but its time grows with the square of an array's length.
  nlohmann::json value = nlohmann::json::parse(text);
  if (NestingOf(text) > kMaxJsonDepth) throw std::length_error("JSON nests too deeply");
  return value;
}
