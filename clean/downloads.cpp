#include "clean/downloads.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "base/lower_case.h"
#include "base/text.h"

namespace {

constexpr uint64_t kTicksPerHour = 36'000'000'000;
constexpr uint64_t kMinAgeHours = 720;
constexpr uint64_t kLargestIgnoredBytes = 1'048'576;

constexpr std::wstring_view kExtensions[] = {L".iso", L".img", L".exe", L".msi", L".zip",
                                             L".rar", L".7z",  L".tar", L".gz",  L".cab"};

}  // namespace

bool HasDownloadJunkExtension(const std::wstring& name) {
  const size_t dot = name.rfind(L'.');
  if (dot == name.npos || dot == 0) return false;
  return std::ranges::find(kExtensions, LowerCase(name.substr(dot))) != std::end(kExtensions);
}

std::optional<DownloadJunkItem> ReviewDownload(const std::wstring& folder, const DownloadFile& file,
                                               uint64_t now) {
  if (!HasDownloadJunkExtension(file.name) || file.written_at == 0 || file.written_at > now)
    return std::nullopt;
  const uint64_t age_hours = (now - file.written_at) / kTicksPerHour;
  if (age_hours < kMinAgeHours || file.size_bytes <= kLargestIgnoredBytes) return std::nullopt;
  const std::wstring path = folder + (folder.ends_with(L'\\') ? L"" : L"\\") + file.name;
  return DownloadJunkItem{WideToUtf8(file.name), WideToUtf8(path), file.size_bytes, age_hours / 24};
}

nlohmann::json ToJson(const std::vector<DownloadJunkItem>& items) {
  uint64_t total_bytes = 0;
  nlohmann::json rows = nlohmann::json::array();
  for (const DownloadJunkItem& item : items) {
    total_bytes += item.size_bytes;
    rows.push_back(
        {{"name", item.name}, {"path", item.path}, {"size", item.size_bytes}, {"daysOld", item.days_old}});
  }
  return {{"totalBytes", total_bytes}, {"count", items.size()}, {"items", std::move(rows)}};
}
