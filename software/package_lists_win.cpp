#include "software/package_lists.h"

#include "base/page.h"
#include "exec/tool_run.h"
#include "software/winget_table.h"

namespace {

constexpr const wchar_t* kWingetListCommand =
    L"winget list --accept-source-agreements --disable-interactivity";

}  // namespace

void getSoftwareUpdates(int request_id) {
  const std::vector<SoftwareUpdateEntry> updates = ParseSoftwareUpdates(CaptureTool(kWingetUpgradeCommand));
  PostReply("software_updates", request_id, true, {{"updates", ToJson(updates)}, {"count", updates.size()}});
}

void getInstalledApps(int request_id) {
  const std::vector<InstalledAppEntry> apps = ParseInstalledApps(CaptureTool(kWingetListCommand));
  PostReply("apps", request_id, true, {{"apps", ToJson(apps)}});
}
