#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

// Deepest nesting that is accepted from outside. Copying and serialising a document recurse once a level;
// threads of the program have stack for this many (kStackReserve in cmake/settings.cmake).
inline constexpr size_t kMaxJsonDepth = 12'000;

// Parses one JSON document (UTF-8), strictly. Throws nlohmann::json::exception for text that is not JSON, and
// std::length_error for valid-looking text that nests deeper than kMaxJsonDepth.
nlohmann::json ParseJson(std::string_view text);
