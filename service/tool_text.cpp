#include "service/tool_text.h"

#include <cstdint>
#include <utility>

namespace {

void AppendUtf8(std::string& text, uint32_t character) {
  const auto add = [&](uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return add(character);
  if (character < 0x800) {
    add(0xC0 | character >> 6);
  } else if (character < 0x10000) {
    add(0xE0 | character >> 12);
    add(0x80 | (character >> 6 & 0x3F));
  } else {
    add(0xF0 | character >> 18);
    add(0x80 | (character >> 12 & 0x3F));
    add(0x80 | (character >> 6 & 0x3F));
  }
  add(0x80 | (character & 0x3F));
}

uint32_t UnitAt(const std::string& bytes, size_t at) {
  return static_cast<uint8_t>(bytes[at]) | uint32_t{static_cast<uint8_t>(bytes[at + 1])} << 8;
}

}  // namespace

std::string ToolText::Add(std::string_view bytes) {
  pending_ += bytes;
  if (form_ == Form::kUnknown && pending_.size() > 1)
    form_ = pending_[1] == '\0' ? Form::kUtf16 : Form::kBytes;
  if (form_ == Form::kBytes) return std::exchange(pending_, {});
  std::string text;
  size_t at = 0;
  for (; form_ == Form::kUtf16 && at + 1 < pending_.size(); at += 2) {
    const uint32_t unit = UnitAt(pending_, at);
    const bool is_plain = unit < 0xD800 || unit > 0xDFFF, is_first = !is_plain && unit < 0xDC00;
    if (is_first && at + 3 >= pending_.size()) break;
    const uint32_t second = is_first ? UnitAt(pending_, at + 2) : 0;
    if (is_plain) {
      AppendUtf8(text, unit);
    } else if (second >= 0xDC00 && second <= 0xDFFF) {
      AppendUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (second - 0xDC00));
      at += 2;
    } else {
      AppendUtf8(text, 0xFFFD);
    }
  }
  pending_.erase(0, at);
  return text;
}
