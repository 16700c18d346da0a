#include "app/settings.h"

#include <exception>
#include <fstream>
#include <iterator>
#include <string>

#include "base/json_text.h"

namespace {

nlohmann::json DefaultSettings() {
  return {{"theme", "amethyst"},
          {"autoScan", true},
          {"scanInterval", 24},
          {"ignoreList", nlohmann::json::array()}};
}

}  // namespace

nlohmann::json LoadSettings(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream) return DefaultSettings();
  try {
    return ParseJson(std::string{std::istreambuf_iterator<char>(stream), {}});
  } catch (const std::exception&) {
    return DefaultSettings();
  }
}

void SaveSettings(const std::filesystem::path& file, const nlohmann::json& document) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  if (stream) stream << document.dump(4);
}
