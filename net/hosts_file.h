#pragma once

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

// The page's message, one compact JSON document, from the file's bytes; those that are not UTF-8 are taken as
// text in the ANSI code page.
std::string BuildHostsFile(int request_id, const std::string& bytes);

// The same from the helper service's answer; null, or any other value than a successful answer, gives a
// failed reply.
std::string BuildHostsFileFromService(int request_id, const nlohmann::json& answer);
