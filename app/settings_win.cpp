#include "app/settings_win.h"

#include <utility>

#include "app/dispatcher.h"
#include "app/settings.h"
#include "base/exe_directory_win.h"

namespace {

std::filesystem::path SettingsFile() {
  return GetExeDirectory() + L"\\..\\settings.json";
}

}  // namespace

void getSettings(int32_t request_id) {
  PostSuccess("settings", request_id, {{"settings", LoadSettings(SettingsFile())}});
}

void saveSettings(int32_t request_id, nlohmann::json document) {
  SaveSettings(SettingsFile(), document);
  PostSuccess("saveSettings", request_id, {{"settings", std::move(document)}});
}
