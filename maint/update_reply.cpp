#include "maint/update_reply.h"

#include "base/json_text.h"
#include "maint/version.h"

using nlohmann::json;

std::string BuildUpdateCheckReply(int request_id, std::string_view description) {
  try {
    const json online = ParseJson(description);
    const auto version = online.value("version", std::string(kCurrentVersion));
    return json{{"type", "checkForUpdates"},
                {"requestId", request_id},
                {"success", true},
                {"onlineVersion", version},
                {"currentVersion", kCurrentVersion},
                {"hasUpdate", ParseVersion(version) > ParseVersion(kCurrentVersion)},
                {"downloadUrl", online.value("download_url", "")},
                {"changelog", online.value("changelog", "")},
                {"mandatory", online.value("mandatory", false)}}
        .dump();
  } catch (const std::exception&) {
    return BuildUpdateCheckFailure(request_id, "Invalid version file");
  }
}

std::string BuildUpdateCheckFailure(int request_id, std::string_view error) {
  return json{{"type", "checkForUpdates"}, {"requestId", request_id}, {"success", false}, {"error", error}}
      .dump();
}

std::string BuildApplyUpdateReply(int request_id, std::string_view error) {
  json reply{{"type", "downloadAndApplyUpdate"}, {"requestId", request_id}, {"success", error.empty()}};
  if (!error.empty()) reply["error"] = error;
  return reply.dump();
}
