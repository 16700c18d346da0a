#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

// The deepest nesting accepted from outside. Copying and serialising a document recurse once per level,
// and every thread reserves enough stack for this depth (kStackReserve in cmake/settings.cmake).
inline constexpr size_t kMaxJsonDepth = 12'000;

// Parses one JSON document (UTF-8), strictly. Throws nlohmann::json::exception for text that is not
// JSON, and std::length_error for JSON that nests deeper than kMaxJsonDepth.
nlohmann::json ParseJson(std::string_view text);
