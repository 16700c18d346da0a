#include "app/actions_win.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "app/action_rows.h"
#include "app/settings_win.h"
#include "app/system_actions_win.h"
#include "clean/downloads_win.h"
#include "clean/junk_win.h"
#include "clean/system_files_win.h"
#include "disk/disk_actions.h"
#include "maint/quick_actions_win.h"
#include "maint/update_win.h"
#include "net/dev_services_win.h"
#include "net/environment_win.h"
#include "net/hosts_file_win.h"
#include "net/network_tools.h"
#include "net/pnp_devices_win.h"
#include "net/ports_win.h"
#include "software/install_streams_win.h"
#include "software/leftovers_win.h"
#include "software/package_lists_win.h"
#include "software/system_scan_win.h"
#include "startup/schedule_clean_win.h"
#include "startup/startup_items_win.h"
#include "system/processes_win.h"
#include "system/status_win.h"
#include "system/telemetry_win.h"

namespace {

void exitApp(int) {
  PostQuitMessage(0);
}

void testBridge(int request_id) {
  PostSuccess("testBridge", request_id, {{"status", "ok"}});
}

// The user's own variables are written directly, all others by the helper service.
void SaveEnvVariable(Request& request) {
  const bool is_own = FieldReader<std::string>::Read(request.data, "type") == "user";
  const auto run = is_own ? Inline<saveEnvVariable, "type", "name", "value", "is_delete">
                          : Worker<saveEnvVariable, "type", "name", "value", "is_delete">;
  run(request);
}

// The document is the whole data.
void SaveSettings(Request& request) {
  saveSettings(request.request_id, std::move(request.data));
}

// The selection keeps the request's id as the page sent it.
void CleanJunk(Request& request) {
  StartWorker(
      [selection = ParseJunkSelection(request.data, request.envelope.value("requestId", nlohmann::json(0)))] {
        cleanJunk(selection);
      });
}

// Any other repair is ignored.
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

// Name, thread, function, fields of the data. The work itself stands in the subsystems.
constexpr Action kActions[] = {
    {"exitApp", Inline<exitApp>},
    {"testBridge", Inline<testBridge>},
    {"openUrl", openUrl},
    {"openMailto", openUrl},
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
