#include "software/winget_table.h"

#include <algorithm>
#include <cstdlib>

#include "base/utf8.h"
#include "testing/fuzz_target.h"

FUZZ_TARGET(winget_table, bytes) {
  const auto check = [](bool holds) {
    if (!holds) std::abort();
  };
  const auto check_cells = [&](std::initializer_list<std::string_view> cells) {
    for (const std::string_view cell : cells) {
      check(!cell.empty() && IsValidUtf8(cell) && cell.front() != ' ' && cell.back() != ' ');
      check(cell.find_first_of("\n\t") == cell.npos && cell.find("  ") == cell.npos);
    }
  };
  const auto lines = static_cast<size_t>(std::ranges::count(bytes, '\n')) + 1;
  const auto updates = ParseSoftwareUpdates(bytes);
  const auto apps = ParseInstalledApps(bytes);
  check(updates.size() <= apps.size() && apps.size() < lines);  // the rule line is not a row
  for (const auto& it : updates) check_cells({it.name, it.id, it.version, it.available, it.source});
  for (const auto& it : apps) check_cells({it.name, it.id, it.version, it.source});
}
