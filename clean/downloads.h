#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// Replies with the old, large installers and archives that lie directly in the user's Downloads folder
// (SHGetKnownFolderPath, otherwise %USERPROFILE%\Downloads). Worker body.
void getDownloadsJunk(int request_id);

// Moves each path (UTF-8, absolute) to the Recycle Bin (SHFileOperationW) and reports how many were moved.
// The shell may show a message box for a file that it cannot move. Worker body.
void deleteSpecificFiles(int request_id, const std::vector<std::string>& paths);

struct DownloadFile {
  std::wstring name;
  uint64_t size_bytes = 0;
  uint64_t written_at = 0;  // 100 ns since 1601; 0: unknown
};

// An old, large installer or archive.
struct DownloadJunkItem {
  std::string name;  // UTF-8
  std::string path;  // UTF-8, absolute
  uint64_t size_bytes = 0;
  uint64_t days_old = 0;
};

// Returns true for ".iso", ".zip" and the other listed extensions, in any case. Only the last extension
// of a name counts, and a name whose only dot is its first character has none.
bool HasDownloadJunkExtension(const std::wstring& name);

// Returns the listed item for a file of `folder` at the time `now` (100 ns since 1601), or nothing if
// the file is not listed.
std::optional<DownloadJunkItem> ReviewDownload(const std::wstring& folder, const DownloadFile& file,
                                               uint64_t now);

// Returns the members of the page's reply.
nlohmann::json ToJson(const std::vector<DownloadJunkItem>& items);
