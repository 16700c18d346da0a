#pragma once

#include <string>

#include <nlohmann/json.hpp>

// The page's message, one compact JSON document: the services that the helper service's answer lists, as they
// stand. Null, or an answer without a list, gives none.
std::string BuildDevServices(int request_id, const nlohmann::json& answer);
