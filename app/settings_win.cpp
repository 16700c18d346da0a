#include "app/settings.h"

#include <utility>

#include "base/exe_directory.h"
#include "base/page.h"

namespace {

std::filesystem::path SettingsFile() {
  return GetExeDirectory() + L"\\..\\settings.json";
}

}  // namespace

void getSettings(int32_t request_id) {
  PostReply("settings", request_id, true, {{"settings", LoadSettings(SettingsFile())}});
}

void saveSettings(int32_t request_id, nlohmann::json document) {
  SaveSettings(SettingsFile(), document);
  PostReply("saveSettings", request_id, true, {{"settings", std::move(document)}});
}
