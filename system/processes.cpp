#include "system/processes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "base/lower_case.h"
#include "base/text.h"

namespace {

constexpr std::wstring_view kSystemNames[] = {
    L"system",       L"idle",      L"registry",      L"csrss.exe",   L"wininit.exe",
    L"services.exe", L"lsass.exe", L"smss.exe",      L"svchost.exe", L"explorer.exe",
    L"winlogon.exe", L"dwm.exe",   L"taskhostw.exe", L"conhost.exe", L"spoolsv.exe",
};

}  // namespace

bool IsSystemProcess(uint32_t pid, const std::wstring& name) {
  return pid == 0 || pid == 4 || std::ranges::find(kSystemNames, LowerCase(name)) != std::end(kSystemNames);
}

bool IsInWindowsDirectory(const std::wstring& path, const std::wstring& windows_directory) {
  return LowerCase(path).starts_with(LowerCase(windows_directory));
}

nlohmann::json ToJson(const std::vector<ProcessInfo>& processes) {
  nlohmann::json rows = nlohmann::json::array();
  for (const ProcessInfo& process : processes)
    rows.push_back({{"name", WideToUtf8(process.name)},
                    {"pid", process.pid},
                    {"memUsageMB", process.mem_usage_mb},
                    {"mem", std::llround(process.mem_usage_mb)},
                    {"cpuTimeSec", process.cpu_time_sec},
                    {"isSystem", process.is_system}});
  return rows;
}
