#include "clean/junk.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "exec/service_protocol.h"

namespace {

// Returns the folder with exactly one trailing separator.
std::wstring Closed(std::wstring_view folder) {
  while (folder.ends_with(L'\\') || folder.ends_with(L'/')) folder.remove_suffix(1);
  return std::wstring(folder) + L'\\';
}

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
  for (size_t i = 0; i < kJunkCategoryCount; ++i)
    if (const char* member = kJunkCategories[i].service_member)
      sizes.bytes[i] = std::max(sizes.bytes[i], ReplyCount(answer, member, 0));
}

std::string BuildJunkReply(std::string_view type, const nlohmann::json& request_id, const JunkSizes& sizes) {
  nlohmann::json categories;
  for (size_t i = 0; i < kJunkCategoryCount; ++i) categories[kJunkCategories[i].key] = sizes.bytes[i];
  nlohmann::json reply = {{"type", type},
                          {"success", true},
                          {"requestId", request_id},
                          {"categories", std::move(categories)},
                          {"total", sizes.Total()},
                          {"bytes", sizes.Total()}};
  for (size_t i = 0; i < kJunkCategoryCount; ++i)
    if (sizes.kept[i]) reply["kept"].push_back(kJunkCategories[i].key);
  return reply.dump();
}

bool MayBeEmptied(std::wstring_view folder, const KeptFolders& kept, SamePath same) {
  const auto is_within = [same](std::wstring_view path, std::wstring_view above) {
    return path.size() >= above.size() && same(path.substr(0, above.size()), above);
  };
  const std::wstring path = Closed(folder), windows = Closed(kept.windows);
  for (const std::wstring& other : kept.others)
    if (is_within(Closed(other), path)) return false;
  if (is_within(windows, path)) return false;
  if (!is_within(path, windows)) return true;
  return is_within(path, windows + L"Temp\\") || is_within(path, windows + L"SystemTemp\\");
}
