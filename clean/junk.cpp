#include "clean/junk.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "base/lower_case.h"
#include "exec/service_protocol.h"

namespace {

// Folders in one form: lower case, one separator at the end.
std::wstring Normalized(std::wstring_view folder) {
  while (folder.ends_with(L'\\') || folder.ends_with(L'/')) folder.remove_suffix(1);
  return LowerCase(std::wstring(folder)) + L'\\';
}

// What the service counts, and where its figure goes.
struct ServiceSize {
  const char* member;
  size_t category;
};
constexpr ServiceSize kServiceSizes[] = {{"windowsTempBytes", 0}, {"prefetchBytes", 2}};

}  // namespace

uint64_t JunkSizes::Total() const {
  return std::accumulate(bytes.begin(), bytes.end(), uint64_t{0});
}

JunkSelection ParseJunkSelection(const nlohmann::json& data, const nlohmann::json& request_id) {
  JunkSelection selection = {{}, request_id};
  for (size_t i = 0; i < kJunkCategoryCount; ++i)
    selection.flags[i] = data.is_null() || data.value(kJunkCategories[i].key, true);
  return selection;
}

nlohmann::json BuildCleanRequest(const JunkFlags& flags) {
  nlohmann::json request;
  for (size_t i = 0; i < kJunkCategoryCount; ++i) request[kJunkCategories[i].key] = flags[i];
  return request;
}

void RaiseToServiceSizes(const nlohmann::json& answer, JunkSizes& sizes) {
  if (!ReplySuccess(answer)) return;
  for (const auto& [member, category] : kServiceSizes)
    sizes.bytes[category] = std::max(sizes.bytes[category], ReplyCount(answer, member, 0));
}

std::string BuildJunkReply(std::string_view type, const nlohmann::json& request_id, const JunkSizes& sizes) {
  nlohmann::json categories;
  for (size_t i = 0; i < kJunkCategoryCount; ++i) categories[kJunkCategories[i].key] = sizes.bytes[i];
  return nlohmann::json{{"type", type},
                        {"success", true},
                        {"requestId", request_id},
                        {"categories", std::move(categories)},
                        {"total", sizes.Total()},
                        {"bytes", sizes.Total()}}
      .dump();
}

bool MayBeEmptied(std::wstring_view folder, const KeptFolders& kept) {
  const std::wstring path = Normalized(folder), windows = Normalized(kept.windows);
  for (const std::wstring& other : kept.others)
    if (Normalized(other).starts_with(path)) return false;
  if (windows.starts_with(path)) return false;
  if (!path.starts_with(windows)) return true;
  return path.starts_with(windows + L"temp\\") || path.starts_with(windows + L"systemtemp\\");
}
