#include "software/driver_check.h"

#include "base/json_text.h"
#include "base/text.h"

namespace {

struct Field {
  const char* name;        // sent to the page
  const char* script_key;  // in the script's output
  nlohmann::json fallback;
};

nlohmann::json BuildDriverUpdateEntry(const nlohmann::json& update) {
  static const Field kFields[] = {
      {"title", "Title", ""},
      {"description", "Description", ""},
      {"categories", "Categories", "Drivers"},
      {"kbArticles", "KBArticles", "None"},
      {"currentVersion", "CurrentVersion", ""},
      {"availableVersion", "AvailableVersion", ""},
      {"releaseDate", "ReleaseDate", ""},
      {"severity", "Severity", ""},
      {"hardwareId", "HardwareId", ""},
      {"isSkipped", "IsSkipped", false},
  };
  nlohmann::json entry;
  for (const Field& field : kFields) {
    entry[field.name] = update.contains(field.script_key) ? update[field.script_key] : field.fallback;
  }
  if (!update.contains("Title") && update.contains("title")) entry["title"] = update["title"];
  return entry;
}

}  // namespace

std::string DriverCheckFailure(std::string_view output) {
  constexpr std::string_view kBlank = "\xEF\xBB\xBF \t\r\n";
  constexpr size_t kMaxCodePoints = 300;
  const std::string text = ConsoleTextToUtf8(output);
  const size_t begin = text.find_first_not_of(kBlank);
  if (begin == text.npos) return {};
  std::string line = text.substr(begin, text.find_first_of("\r\n", begin) - begin);
  size_t code_points = 0;
  for (size_t i = 0; i < line.size(); ++i) {
    const bool continues = (static_cast<unsigned char>(line[i]) & 0xC0) == 0x80;
    if (!continues && ++code_points > kMaxCodePoints) line.resize(i);
  }
  return line;
}

DriverCheck ParseDriverCheck(std::string_view output) {
  const nlohmann::json document = ParseJson(ConsoleTextToUtf8(output));
  DriverCheck check;
  if (!document.is_object()) return check;
  const auto count = document.find("scannedDriversCount");
  if (count != document.end() && count->is_number()) check.scanned_drivers_count = *count;
  const auto updates = document.find("updates");
  if (updates == document.end() || !updates->is_array()) return check;
  for (const nlohmann::json& update : *updates) check.updates.push_back(BuildDriverUpdateEntry(update));
  return check;
}

nlohmann::json ToJson(const DriverCheck& check) {
  return {{"updates", check.updates},
          {"count", check.updates.size()},
          {"scannedDriversCount", check.scanned_drivers_count}};
}
