#include "base/json_text.h"

#include <algorithm>
#include <stdexcept>

namespace {

// Deepest bracket level of a text that is known to be JSON.
size_t NestingOf(std::string_view text) {
  size_t depth = 0, deepest = 0;
  bool in_string = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (in_string && c == '\\') {
      ++i;  // whatever is escaped, a quotation mark above all
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
  // Parsing and destroying need no stack a level, so the depth can be looked at afterwards. The library's own
  // callback would see it earlier, but takes time that grows with the square of an array's length.
  nlohmann::json value = nlohmann::json::parse(text);
  if (NestingOf(text) > kMaxJsonDepth) throw std::length_error("JSON nests too deeply");
  return value;
}
