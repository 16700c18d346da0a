#include "startup/startup_items.h"

#include <string_view>
#include <utility>

#include "base/lower_case.h"
#include "base/text.h"

namespace {

constexpr uint32_t kRegistryBinary = 3;  // REG_BINARY
constexpr uint8_t kEnabled = 2;
constexpr uint8_t kDisabled = 3;

// The first of these words that the lower-case command contains decides.
constexpr std::pair<std::wstring_view, const wchar_t*> kImpactWords[] = {
    {L"discord", L"High"},  {L"steam", L"High"},    {L"spotify", L"High"},   {L"teams", L"High"},
    {L"chrome", L"High"},   {L"browser", L"High"},  {L"onedrive", L"High"},  {L"epicgames", L"High"},
    {L"helper", L"Medium"}, {L"update", L"Medium"}, {L"manager", L"Medium"}, {L"tray", L"Medium"},
    {L"agent", L"Medium"},
};

}  // namespace

std::wstring EstimateImpact(const std::wstring& command) {
  const std::wstring lower = LowerCase(command);
  for (const auto& [word, impact] : kImpactWords)
    if (lower.find(word) != lower.npos) return impact;
  return L"Low";
}

ApprovalValue MakeApprovalValue(bool enable) {
  return {enable ? kEnabled : kDisabled};
}

bool IsDisabledByApproval(uint32_t type, std::span<const uint8_t> data) {
  return type == kRegistryBinary && !data.empty() && data[0] != kEnabled;
}

nlohmann::json ToJson(const std::vector<StartupItem>& items) {
  nlohmann::json rows = nlohmann::json::array();
  for (const StartupItem& item : items)
    rows.push_back({{"name", WideToUtf8(item.name)},
                    {"command", WideToUtf8(item.command)},
                    {"registryPath", WideToUtf8(item.registry_path)},
                    {"scope", WideToUtf8(item.scope)},
                    {"enabled", item.enabled},
                    {"impact", WideToUtf8(item.impact)}});
  return rows;
}
