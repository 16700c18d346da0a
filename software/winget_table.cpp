#include "software/winget_table.h"

#include <cstddef>
#include <utility>

#include "base/text.h"

namespace {

using WingetTableRow = std::vector<std::string>;

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kUpdateFooters[] = {"upgrades available", "package(s) have version numbers"};

bool IsRule(std::string_view line) {
  return line.starts_with("---") || line.starts_with("===") || line.find("------") != line.npos;
}

bool IsUpdateFooter(std::string_view line) {
  for (const std::string_view footer : kUpdateFooters)
    if (line.find(footer) != line.npos) return true;
  return false;
}

// Removes the text up to the next line feed from the front of `rest` and returns it without its carriage
// return and leading spaces.
std::string_view TakeLine(std::string_view& rest) {
  const size_t end = rest.find('\n');
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  const size_t first = line.find_first_not_of(kBlanks);
  return first == line.npos ? std::string_view{} : line.substr(first);
}

// Cuts one line at runs of two or more blanks (space, tab). A single blank inside a cell becomes a
// space:
//   "Tarn Sync                    Brook.TarnSync   1.0.2   1.2.0     winget"
//     -> "Tarn Sync", "Brook.TarnSync", "1.0.2", "1.2.0", "winget"
//   "Copse                        9QX2B4LMN0PR     3.1.0.0 3.2.0.0   msstore"
//     -> "Copse", "9QX2B4LMN0PR", "3.1.0.0 3.2.0.0", "msstore"
WingetTableRow SplitWingetColumns(std::string_view line) {
  WingetTableRow row;
  std::string cell;
  size_t blanks = 0;
  for (const char byte : line) {
    if (kBlanks.find(byte) != kBlanks.npos) {
      ++blanks;
      continue;
    }
    if (!cell.empty() && blanks == 1) cell += ' ';
    if (!cell.empty() && blanks >= 2) row.push_back(std::exchange(cell, {}));
    cell += byte;
    blanks = 0;
  }
  if (!cell.empty()) row.push_back(std::move(cell));
  return row;
}

// Returns the body rows with at least `min_cells` cells, in order.
std::vector<WingetTableRow> WalkTable(std::string_view capture, size_t min_cells, bool ends_at_footer) {
  std::vector<WingetTableRow> rows;
  bool in_body = false;
  while (!capture.empty()) {
    const std::string_view line = TakeLine(capture);
    if (line.empty()) continue;
    if (IsRule(line)) {
      in_body = true;
      continue;
    }
    if (!in_body) continue;
    if (ends_at_footer && IsUpdateFooter(line)) break;
    // Converted line by line, so that one broken byte does not put the names of all other rows into
    // another code page.
    WingetTableRow row = SplitWingetColumns(ConsoleTextToUtf8(line));
    if (row.size() >= min_cells) rows.push_back(std::move(row));
  }
  return rows;
}

std::string SourceOf(WingetTableRow& row, const char* fallback) {
  return row.size() >= 5 ? std::move(row[4]) : std::string(fallback);
}

}  // namespace

std::vector<SoftwareUpdateEntry> ParseSoftwareUpdates(std::string_view capture) {
  std::vector<SoftwareUpdateEntry> entries;
  for (WingetTableRow& row : WalkTable(capture, 4, true))
    entries.push_back({std::move(row[0]), std::move(row[1]), std::move(row[2]), std::move(row[3]),
                       SourceOf(row, "winget")});
  return entries;
}

std::vector<InstalledAppEntry> ParseInstalledApps(std::string_view capture) {
  std::vector<InstalledAppEntry> entries;
  for (WingetTableRow& row : WalkTable(capture, 3, false))
    entries.push_back({std::move(row[0]), std::move(row[1]), std::move(row[2]), SourceOf(row, "local")});
  return entries;
}

nlohmann::json ToJson(const std::vector<SoftwareUpdateEntry>& updates) {
  nlohmann::json rows = nlohmann::json::array();
  for (const SoftwareUpdateEntry& entry : updates)
    rows.push_back({{"name", entry.name},
                    {"id", entry.id},
                    {"version", entry.version},
                    {"available", entry.available},
                    {"source", entry.source}});
  return rows;
}

nlohmann::json ToJson(const std::vector<InstalledAppEntry>& apps) {
  nlohmann::json rows = nlohmann::json::array();
  for (const InstalledAppEntry& entry : apps)
    rows.push_back(
        {{"name", entry.name}, {"id", entry.id}, {"version", entry.version}, {"source", entry.source}});
  return rows;
}
