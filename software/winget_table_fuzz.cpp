#include "software/winget_table.h"

#include <algorithm>
#include <cstdlib>

#include "base/utf8.h"
#include "testing/fuzz_target.h"

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckCells(std::initializer_list<std::string_view> cells) {
  for (const std::string_view cell : cells) {
    Check(!cell.empty() && IsValidUtf8(cell));
    Check(cell.front() != ' ' && cell.back() != ' ');
    Check(cell.find_first_of("\n\t") == cell.npos && cell.find("  ") == cell.npos);
  }
}

}  // namespace

FUZZ_TARGET(winget_table, bytes) {
  const auto lines = static_cast<size_t>(std::ranges::count(bytes, '\n')) + 1;
  const auto updates = ParseSoftwareUpdates(bytes);
  const auto apps = ParseInstalledApps(bytes);
  Check(updates.size() <= apps.size() && apps.size() < lines);  // the rule line is no row
  for (const auto& entry : updates)
    CheckCells({entry.name, entry.id, entry.version, entry.available, entry.source});
  for (const auto& entry : apps) CheckCells({entry.name, entry.id, entry.version, entry.source});
}
