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

// Waits until at least `count` messages are recorded and takes them all; gives up after `timeout_ms` and
// takes what there is.
std::vector<nlohmann::json> WaitForMessages(size_t count, int timeout_ms);
