#include "base/json_text.h"

#include <stdexcept>

nlohmann::json ParseJson(std::string_view text) {
  size_t depth = 0;
  bool too_deep = false;
  auto watch_depth = [&](int event_depth, nlohmann::json::parse_event_t, nlohmann::json&) {
    depth = static_cast<size_t>(event_depth);
    too_deep = too_deep || depth > kMaxJsonDepth;
    return !too_deep;
  };
  nlohmann::json value = nlohmann::json::parse(text, watch_depth);
  if (too_deep) throw std::length_error("JSON nests too deeply");
  return value;
}
