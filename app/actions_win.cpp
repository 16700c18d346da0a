#include "app/actions_win.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/settings_win.h"
#include "app/system_actions_win.h"
#include "base/worker_win.h"
#include "clean/downloads_win.h"
#include "clean/junk_win.h"
#include "clean/system_files.h"
#include "clean/system_files_win.h"
#include "disk/disk_actions.h"
#include "exec/streaming_command_win.h"
#include "maint/quick_actions_win.h"
#include "maint/update_win.h"
#include "net/dev_services_win.h"
#include "net/environment_win.h"
#include "net/hosts_file_win.h"
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

// For rows whose work is done on a worker thread: without fields, and with one text field.
template <void (*kBody)(int)>
void OnWorker(Request& request) {
  StartWorker([request_id = request.request_id] { kBody(request_id); });
}
template <void (*kBody)(int, const std::string&)>
void OnWorker(Request& request, const char* field) {
  StartWorker([request_id = request.request_id, text = request.Data()[field].get<std::string>()] {
    kBody(request_id, text);
  });
}

// The repairs by the name that the page gives; any other name is ignored.
void quickAction(Request& request) {
  constexpr std::pair<std::string_view, void (*)(int)> kRepairs[] = {{"flush-dns", flushDns},
                                                                     {"rebuild-icons", rebuildIcons},
                                                                     {"sfc", sfcVerify},
                                                                     {"safemode-reboot", safemodeReboot}};
  const auto type = request.Data()["type"].get<std::string>();
  for (const auto& [name, body] : kRepairs)
    if (type == name) return StartWorker([body, request_id = request.request_id] { body(request_id); });
}

// A row reads the fields and answers at once or starts a worker with copies of them. The work itself stands
// in the subsystems.
constexpr Action kActions[] = {
    {"exitApp", [](Request&) { PostQuitMessage(0); }},
    {"testBridge",
     [](Request& request) {
       PostSuccess("testBridge", request.request_id, {{"status", "ok"}});
     }},
    {"openUrl", openUrl},
    {"openMailto", openUrl},
    {"getCPU", [](Request& request) { getCPU(request.request_id); }},
    {"uninstallAppSuite", [](Request&) { uninstallAppSuite(); }},
    {"getOpenPorts", OnWorker<getOpenPorts>},
    {"getEnvVariables", [](Request& request) { getEnvVariables(request.request_id); }},
    {"saveEnvVariable",
     [](Request& request) {
       nlohmann::json& data = request.Data();
       const auto type = data["type"].get<std::string>();
       const auto save = [request_id = request.request_id, type, name = data["name"].get<std::string>(),
                          value = data["value"].get<std::string>(),
                          is_delete = data["is_delete"].get<bool>()] {
         saveEnvVariable(request_id, type, name, value, is_delete);
       };
       if (type == "user") {
         save();
       } else {
         StartWorker(save);
       }
     }},
    {"getHostsFile", OnWorker<getHostsFile>},
    {"saveHostsFile", [](Request& request) { OnWorker<saveHostsFile>(request, "content"); }},
    {"getDevServices", OnWorker<getDevServices>},
    {"controlDevService",
     [](Request& request) {
       StartWorker([request_id = request.request_id,
                    service_type = request.Data()["service_type"].get<std::string>(),
                    command = request.Data()["command"].get<std::string>()] {
         controlDevService(request_id, service_type, command);
       });
     }},
    {"runPingDiagnostic",
     [](Request& request) {
       StartWorker([request_id = request.request_id, type = request.Data()["type"].get<std::string>(),
                    target = request.Data()["target"].get<std::string>()] {
         runPingDiagnostic(request_id, type, target);
       });
     }},
    {"getStatus", [](Request& request) { getStatus(request.request_id); }},
    {"getTelemetry", [](Request& request) { getTelemetry(request.request_id); }},
    {"debugSystem", [](Request& request) { debugSystem(request.request_id); }},
    {"getSettings", [](Request& request) { getSettings(request.request_id); }},
    {"saveSettings", [](Request& request) { saveSettings(request.request_id, std::move(request.Data())); }},
    {"reboot", [](Request& request) { reboot(request.request_id); }},
    {"getPnpDevices", OnWorker<getPnpDevices>},
    {"getProcesses", [](Request& request) { getProcesses(request.request_id); }},
    {"killProcess",
     [](Request& request) { killProcess(request.request_id, ToInteger<uint32_t>(request.Data()["pid"])); }},
    {"getJunk", OnWorker<getJunk>},
    {"cleanJunk",
     [](Request& request) {
       StartWorker([selection = ParseJunkSelection(request.Data(),
                                                   request.envelope.value("requestId", nlohmann::json(0)))] {
         cleanJunk(selection);
       });
     }},
    {"getSystemFilesAdvisor", OnWorker<getSystemFilesAdvisor>},
    {"setHibernation",
     [](Request& request) {
       StartWorker([request_id = request.request_id, enabled = ParseHibernationEnabled(request.Data())] {
         setHibernation(request_id, enabled);
       });
     }},
    {"getDownloadsJunk", OnWorker<getDownloadsJunk>},
    {"deleteSpecificFiles",
     [](Request& request) {
       StartWorker([request_id = request.request_id,
                    paths = request.Data()["paths"].get<std::vector<std::string>>()] {
         deleteSpecificFiles(request_id, paths);
       });
     }},
    {"getStartupItems", [](Request& request) { getStartupItems(request.request_id); }},
    {"toggleStartupItem",
     [](Request& request) {
       StartWorker([request_id = request.request_id, scope = request.Data()["scope"].get<std::string>(),
                    name = request.Data()["name"].get<std::string>(),
                    enabled = request.Data()["enabled"].get<bool>()] {
         toggleStartupItem(request_id, scope, name, enabled);
       });
     }},
    {"toggleScheduleClean",
     [](Request& request) {
       StartWorker([request_id = request.request_id, enabled = request.Data()["enabled"].get<bool>()] {
         toggleScheduleClean(request_id, enabled);
       });
     }},
    {"getSoftwareUpdates", OnWorker<getSoftwareUpdates>},
    {"getDriverUpdates", OnWorker<getDriverUpdates>},
    {"checkForUpdates", OnWorker<checkForUpdates>},
    {"downloadAndApplyUpdate",
     [](Request& request) {
       nlohmann::json& data = request.Data();
       StartWorker([request_id = request.request_id, url = data.contains("downloadUrl")
                                                               ? data["downloadUrl"].get<std::string>()
                                                               : DefaultInstallerUrl()] {
         downloadAndApplyUpdate(request_id, url);
       });
     }},
    {"startSystemScan", OnWorker<startSystemScan>},
    {"getInstalledApps", OnWorker<getInstalledApps>},
    {"uninstallApp", [](Request& request) { OnWorker<uninstallApp>(request, "id"); }},
    {"findLeftovers",
     [](Request& request) {
       StartWorker(
           [request_id = request.request_id, id = request.Data()["id"].get<std::string>(),
            name = request.Data()["name"].get<std::string>()] { findLeftovers(request_id, id, name); });
     }},
    {"cleanLeftovers",
     [](Request& request) {
       StartWorker([request_id = request.request_id,
                    items = request.Data()["items"].get<std::vector<nlohmann::json>>()] {
         cleanLeftovers(request_id, items);
       });
     }},
    {"startDiskAnalysis", [](Request& request) { OnWorker<startDiskAnalysis>(request, "drive"); }},
    {"getFolderContents", [](Request& request) { OnWorker<getFolderContents>(request, "path"); }},
    {"installSoftware", [](Request& request) { OnWorker<installSoftware>(request, "id"); }},
    {"installDriver", [](Request& request) { OnWorker<installDriver>(request, "title"); }},
    {"quickAction", quickAction},
};

}  // namespace

std::span<const Action> Actions() {
  return kActions;
}
