#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// Stand-in for the page: keeps what base/page.h's functions were given, in order, from any thread.

// Everything posted since the last call, as the exact texts; console lines appear as their console_log
// document.
std::vector<std::string> TakePostedTexts();

// The same, parsed.
std::vector<nlohmann::json> TakePostedMessages();
