#include "app/actions_win.h"

#include <windows.h>

#include <utility>

#include "app/settings_win.h"
#include "app/system_actions_win.h"
#include "system/status_win.h"
#include "system/telemetry_win.h"

namespace {

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
    {"getStatus", [](Request& request) { getStatus(request.request_id); }},
    {"getTelemetry", [](Request& request) { getTelemetry(request.request_id); }},
    {"debugSystem", [](Request& request) { debugSystem(request.request_id); }},
    {"getSettings", [](Request& request) { getSettings(request.request_id); }},
    {"saveSettings", [](Request& request) { saveSettings(request.request_id, std::move(request.Data())); }},
    {"reboot", [](Request& request) { reboot(request.request_id); }},
};

}  // namespace

std::span<const Action> Actions() {
  return kActions;
}
