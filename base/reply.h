#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

// The members that every reply to the page has; an action adds its own.
inline nlohmann::json MakeReply(std::string_view type, bool success, int request_id) {
  return {{"type", type}, {"success", success}, {"requestId", request_id}};
}
