#include "app/actions.h"

#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "app/action_rows.h"
#include "app/debug_report.h"
#include "app/settings.h"
#include "app/uninstall.h"
#include "base/page.h"
#include "base/text.h"
#include "clean/downloads.h"
#include "clean/junk.h"
#include "clean/system_files.h"
#include "disk/analysis.h"
#include "maint/quick_actions.h"
#include "maint/update.h"
#include "net/dev_services.h"
#include "net/environment_win.h"
#include "net/hosts_file.h"
#include "net/network_tools.h"
#include "net/pnp_devices.h"
#include "net/ports.h"
#include "software/install_streams.h"
#include "software/leftovers.h"
#include "software/package_lists.h"
#include "software/system_scan.h"
#include "startup/schedule_clean.h"
#include "startup/startup_items.h"
#include "system/hardware.h"
#include "system/processes.h"
#include "system/status.h"
#include "system/telemetry.h"

namespace {

void exitApp(int) {
  PostQuitMessage(0);
}

void testBridge(int request_id) {
  PostReply("testBridge", request_id, true, {{"status", "ok"}});
}

// Opens the address in the member `url` of the request itself, not of its data; does nothing if it is
// missing or empty. Replies with the action's name as received, whatever the outcome.
void OpenUrl(Request& request) {
  const std::string url = request.envelope.value("url", std::string());
  if (!url.empty()) ShellExecuteW(nullptr, L"open", Utf8ToWide(url).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  PostReply(request.action, request.request_id, true);
}

// Writes the user's own variables directly; the helper service writes all others.
void SaveEnvVariable(Request& request) {
  const bool is_own = FieldReader<std::string>::Read(request.data, "type") == "user";
  const auto run = is_own ? Inline<saveEnvVariable, "type", "name", "value", "is_delete">
                          : Worker<saveEnvVariable, "type", "name", "value", "is_delete">;
  run(request);
}

// The whole data is the document.
void SaveSettings(Request& request) {
  saveSettings(request.request_id, std::move(request.data));
}

// The selection keeps the request's ID exactly as the page sent it.
void CleanJunk(Request& request) {
  StartWorker(
      [selection = ParseJunkSelection(request.data, request.envelope.value("requestId", nlohmann::json(0)))] {
        cleanJunk(selection);
      });
}

// Ignores any other repair.
void QuickAction(Request& request) {
  static constexpr Action kRepairs[] = {
      {"flush-dns", Worker<flushDns>},
      {"rebuild-icons", Worker<rebuildIcons>},
      {"sfc", Worker<sfcVerify>},
      {"safemode-reboot", Worker<safemodeReboot>},
  };
  const auto type = FieldReader<std::string>::Read(request.data, "type");
  const auto repair = std::ranges::find(kRepairs, type, &Action::name);
  if (repair != std::end(kRepairs)) repair->run(request);
}

// Name, thread, function, fields of the data. The work itself is in the subsystems.
constexpr Action kActions[] = {
    {"exitApp", Inline<exitApp>},
    {"testBridge", Inline<testBridge>},
    {"openUrl", OpenUrl},
    {"openMailto", OpenUrl},
    {"getCPU", Inline<getCPU>},
    {"uninstallAppSuite", Inline<uninstallAppSuite>},
    {"getOpenPorts", Worker<getOpenPorts>},
    {"getEnvVariables", Inline<getEnvVariables>},
    {"saveEnvVariable", SaveEnvVariable},
    {"getHostsFile", Worker<getHostsFile>},
    {"saveHostsFile", Worker<saveHostsFile, "content">},
    {"getDevServices", Worker<getDevServices>},
    {"controlDevService", Worker<controlDevService, "service_type", "command">},
    {"runPingDiagnostic", Worker<runPingDiagnostic, "type", "target">},
    {"getStatus", Inline<getStatus>},
    {"getTelemetry", Inline<getTelemetry>},
    {"debugSystem", Inline<debugSystem>},
    {"getSettings", Inline<getSettings>},
    {"saveSettings", SaveSettings},
    {"reboot", Inline<reboot>},
    {"getPnpDevices", Worker<getPnpDevices>},
    {"getProcesses", Inline<getProcesses>},
    {"killProcess", Inline<killProcess, "pid">},
    {"getJunk", Worker<getJunk>},
    {"cleanJunk", CleanJunk},
    {"getSystemFilesAdvisor", Worker<getSystemFilesAdvisor>},
    {"setHibernation", Worker<setHibernation, "enabled">},
    {"getDownloadsJunk", Worker<getDownloadsJunk>},
    {"deleteSpecificFiles", Worker<deleteSpecificFiles, "paths">},
    {"getStartupItems", Inline<getStartupItems>},
    {"toggleStartupItem", Worker<toggleStartupItem, "scope", "name", "enabled">},
    {"toggleScheduleClean", Worker<toggleScheduleClean, "enabled">},
    {"getSoftwareUpdates", Worker<getSoftwareUpdates>},
    {"getDriverUpdates", Worker<getDriverUpdates>},
    {"checkForUpdates", Worker<checkForUpdates>},
    {"downloadAndApplyUpdate", Worker<downloadAndApplyUpdate, "downloadUrl">},
    {"startSystemScan", Worker<startSystemScan>},
    {"getInstalledApps", Worker<getInstalledApps>},
    {"uninstallApp", Worker<uninstallApp, "id">},
    {"findLeftovers", Worker<findLeftovers, "id", "name">},
    {"cleanLeftovers", Worker<cleanLeftovers, "items">},
    {"startDiskAnalysis", Worker<startDiskAnalysis, "drive">},
    {"getFolderContents", Worker<getFolderContents, "path">},
    {"installSoftware", Worker<installSoftware, "id">},
    {"installDriver", Worker<installDriver, "title">},
    {"quickAction", QuickAction},
};

}  // namespace

std::span<const Action> Actions() {
  return kActions;
}
