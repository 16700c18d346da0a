#include "maint/update.h"

#include "base/json_text.h"
#include "maint/version.h"

nlohmann::json DescribeUpdate(std::string_view description) {
  const nlohmann::json online = ParseJson(description);
  const auto version = online.value("version", std::string(kCurrentVersion));
  return {{"onlineVersion", version},
          {"currentVersion", kCurrentVersion},
          {"hasUpdate", ParseVersion(version) > ParseVersion(kCurrentVersion)},
          {"downloadUrl", online.value("download_url", "")},
          {"changelog", online.value("changelog", "")},
          {"mandatory", online.value("mandatory", false)}};
}
