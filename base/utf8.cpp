#include "base/utf8.h"

#include <cstdint>

namespace {

struct Lead {
  uint8_t first, last;                // range of the lead byte
  uint8_t second_first, second_last;  // range of the next byte; all later ones are 80..BF
  int length;
};

constexpr Lead kLeads[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

// Returns the length of the well-formed sequence at the front of `bytes`, or 0 if there is none.
size_t SequenceLength(std::string_view bytes) {
  auto at = [&](size_t i) { return static_cast<uint8_t>(bytes[i]); };
  for (const Lead& lead : kLeads) {
    if (at(0) < lead.first || at(0) > lead.last) continue;
    const auto length = static_cast<size_t>(lead.length);
    if (bytes.size() < length) return 0;
    if (length > 1 && (at(1) < lead.second_first || at(1) > lead.second_last)) return 0;
    for (size_t i = 2; i < length; ++i)
      if (at(i) < 0x80 || at(i) > 0xBF) return 0;
    return length;
  }
  return 0;
}

}  // namespace

bool IsValidUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const size_t length = SequenceLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}
