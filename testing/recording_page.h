#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Stand-in for the page: keeps what base/page.h's functions were given, in order, from any thread.

// Everything posted since the last call, as the exact texts; console lines appear as their console_log
// document.
std::vector<std::string> TakePostedTexts();

// The same, parsed.
std::vector<nlohmann::json> TakePostedMessages();

// What PostReply posts, as its exact text.
std::string PostedReply(std::string_view type, int request_id, bool success, nlohmann::json members);
