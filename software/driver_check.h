#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Reads the driver update check by scripts/check_updates.ps1.

// The result of scripts/check_updates.ps1.
struct DriverCheck {
  // Entries for the page: title, description, categories, kbArticles, currentVersion, availableVersion,
  // releaseDate, severity, hardwareId, isSkipped. Values are the script's own, of any JSON type.
  nlohmann::json updates = nlohmann::json::array();
  // The number of drivers examined, or 171 if the script does not report it.
  nlohmann::json scanned_drivers_count = 171;
};

// Reads the script's whole output (bytes as captured):
//   {"scannedDriversCount":143,
//    "updates":[{"Title":"Peat - System - 10.1.5.3","CurrentVersion":"10.1.4.0",...}]}
// Returns no entries for a document that is no object or has no array `updates`. Throws std::exception
// for text that is not JSON.
DriverCheck ParseDriverCheck(std::string_view output);

// Returns the reason if there is no such document: the first output line with text in it, as UTF-8, cut
// to 300 code points.
std::string DriverCheckFailure(std::string_view output);

// Returns the members of the page's reply.
nlohmann::json ToJson(const DriverCheck& check);
