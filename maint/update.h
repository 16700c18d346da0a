#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Reads version.json at the release endpoint and replies whether there is a newer version. Worker body.
void checkForUpdates(int request_id);

// Downloads the installer from `download_url` (UTF-8; that of the release endpoint if missing), starts it
// elevated with "--update-restart" and ends this program, even if the user declines the elevation. Replies
// and stays if the download fails. Worker body.
void downloadAndApplyUpdate(int request_id, const std::optional<std::string>& download_url);

// Deletes the installer that an update has left in the temporary folder, which may still run for a while
// (tries for 30 s). Worker body, at the start of the program.
void DeleteDownloadedInstaller();

// Returns what the page is told of a version description as the server sent it. Throws std::exception if that
// is no JSON object or has a member of the wrong type.
nlohmann::json DescribeUpdate(std::string_view description);
