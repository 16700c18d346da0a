#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Reads version.json from the release address and replies whether there is a newer version. Worker body.
void checkForUpdates(int request_id);

// Downloads the installer from `download_url` (UTF-8; from the release address if missing), starts it
// elevated with "--update-restart" and ends this program, even if the user declines the elevation. If
// the download fails, replies and keeps running. Worker body.
void downloadAndApplyUpdate(int request_id, const std::optional<std::string>& download_url);

// Deletes the installer that an update left in the temporary folder. It may still be running, so this
// tries for 30 s. Worker body, at program start.
void DeleteDownloadedInstaller();

// Returns the page's message for a version description as the server sent it. Throws std::exception if
// the description is no JSON object or has a member of the wrong type.
nlohmann::json DescribeUpdate(std::string_view description);
