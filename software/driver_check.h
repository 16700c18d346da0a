#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// The check for driver updates by scripts/check_updates.ps1.

// What scripts/check_updates.ps1 found.
struct DriverCheck {
  // Entries for the page: title, description, categories, kbArticles, currentVersion, availableVersion,
  // releaseDate, severity, hardwareId, isSkipped. Values are those of the script, whatever their JSON type.
  nlohmann::json updates = nlohmann::json::array();
  // How many drivers were examined; the page shows 171 when the script does not say.
  nlohmann::json scanned_drivers_count = 171;
};

// Reads the script's whole output (bytes as captured):
//   {"scannedDriversCount":143,
//    "updates":[{"Title":"Peat - System - 10.1.5.3","CurrentVersion":"10.1.4.0",...}]}
// A document that is no object, or has no array `updates`, gives no entries. Throws std::exception for text
// that is not JSON.
DriverCheck ParseDriverCheck(std::string_view output);

// Returns why there is no such document: the first line of the output with text in it, as UTF-8,
// cut to 300 code points.
std::string DriverCheckFailure(std::string_view output);

// Returns the members of the page's reply.
nlohmann::json ToJson(const DriverCheck& check);
