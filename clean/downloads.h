#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

inline constexpr uint64_t kDownloadMinAgeHours = 720;
inline constexpr uint64_t kDownloadLargestIgnoredBytes = 1'048'576;

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

// True for ".iso", ".zip" and the other extensions that are reviewed, in any case; only the last extension of
// a name counts, and a name that begins with its only dot has none.
bool HasDownloadJunkExtension(const std::wstring& name);

// The item that is listed for a file of `folder` at the time `now` (100 ns since 1601), or nothing.
std::optional<DownloadJunkItem> ReviewDownload(const std::wstring& folder, const DownloadFile& file,
                                               uint64_t now);

std::string BuildDownloadsReply(int request_id, std::span<const DownloadJunkItem> items);
std::string BuildDeletedReply(int request_id, size_t deleted_count);
