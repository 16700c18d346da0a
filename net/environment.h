#pragma once

#include <string>
#include <utility>
#include <vector>

// Names and stored values, in the registry's order; environment strings in values are not expanded.
using EnvVariables = std::vector<std::pair<std::wstring, std::wstring>>;

// The page's message, one compact JSON document.
std::string BuildEnvVariables(int request_id, const EnvVariables& user, const EnvVariables& system);
