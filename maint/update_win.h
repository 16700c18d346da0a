#pragma once

#include <optional>
#include <string>

// Fetches `url` into the file `path`, overwriting it (WinINet, the system's proxy settings). False when the
// address cannot be opened or the file cannot be written; a failed write leaves no file. A connection that
// breaks later leaves what had arrived and counts as success, and so does any HTTP status: callers judge the
// content.
bool DownloadFile(const std::wstring& url, const std::wstring& path);

// Worker body: reads version.json at the release endpoint and replies whether there is a newer version.
void checkForUpdates(int request_id);

// Worker body: downloads the installer from `download_url` (UTF-8; that of the release endpoint if missing),
// starts it elevated with "--update-restart" and ends this program, even if the user declines the elevation.
// Replies and stays if the download fails.
void downloadAndApplyUpdate(int request_id, const std::optional<std::string>& download_url);

// Worker body, at the start of the program: deletes the installer that an update has left in the temporary
// folder, which may run for a while yet (tries for 30 s).
void DeleteDownloadedInstaller();
