#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Reads the text tables of the Windows Package Manager. Two or more blanks separate columns. Where the
// tool prints only one (in the widest row of a column), two columns arrive as one cell. All results are
// UTF-8.

struct SoftwareUpdateEntry {
  std::string name, id, version, available;
  std::string source;  // "winget" if the row has no fifth cell
};

struct InstalledAppEntry {
  std::string name, id, version;
  std::string source;  // "local" if the row has no fifth cell; the fourth cell is ignored
};

// Return the rows of the tool's output (bytes as captured; broken ones never fail). Reading starts after
// the first rule line; for updates it ends at the footer. Rows with fewer than four (updates) or three
// (apps) cells are dropped.
std::vector<SoftwareUpdateEntry> ParseSoftwareUpdates(std::string_view capture);
std::vector<InstalledAppEntry> ParseInstalledApps(std::string_view capture);

// Returns the rows of the page's tables.
nlohmann::json ToJson(const std::vector<SoftwareUpdateEntry>& updates);
nlohmann::json ToJson(const std::vector<InstalledAppEntry>& apps);
