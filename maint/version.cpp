#include "maint/version.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <optional>

constinit const std::string_view kCurrentVersion = VARNEL_VERSION;

namespace {

// Removes one integer from the front of `text` and returns it.
std::optional<int> TakeInteger(std::string_view& text) {
  const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || !is_digit(text.front())) return std::nullopt;
  constexpr int64_t limit = std::numeric_limits<int>::max();
  int64_t value = 0;
  for (; !text.empty() && is_digit(text.front()); text.remove_prefix(1))
    value = std::min(limit + 1, value * 10 + (text.front() - '0'));
  return static_cast<int>(negative ? -value : std::min(value, limit));
}

}  // namespace

Version ParseVersion(std::string_view text) {
  Version version;
  for (int* part : {&version.major, &version.minor, &version.patch}) {
    const std::optional<int> number = TakeInteger(text);
    if (!number) break;
    *part = *number;
    if (!text.starts_with('.')) break;
    text.remove_prefix(1);
  }
  return version;
}
