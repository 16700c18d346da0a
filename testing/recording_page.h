#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Stand-in for the page: records the calls of base/page.h's functions in order, from any thread.

// Returns the exact texts of everything posted since the last call. Console lines appear as their
// console_log document.
std::vector<std::string> TakePostedTexts();

// Does the same, but returns the texts parsed.
std::vector<nlohmann::json> TakePostedMessages();

// Returns the exact text that PostReply posts.
std::string PostedReply(std::string_view type, int request_id, bool success, nlohmann::json members);
