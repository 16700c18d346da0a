#include "software/package_lists_win.h"

#include "base/page.h"
#include "exec/tool_run.h"
#include "software/software_messages.h"
#include "software/winget_table.h"

namespace {

constexpr const wchar_t* kWingetListCommand =
    L"winget list --accept-source-agreements --disable-interactivity";

}  // namespace

void getSoftwareUpdates(int request_id) {
  PostJsonToJs(SoftwareUpdatesReply(request_id, ParseSoftwareUpdates(CaptureTool(kWingetUpgradeCommand))));
}

void getInstalledApps(int request_id) {
  PostJsonToJs(InstalledAppsReply(request_id, ParseInstalledApps(CaptureTool(kWingetListCommand))));
}
