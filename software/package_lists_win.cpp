#include "software/package_lists_win.h"

#include "base/page.h"
#include "exec/hidden_process_win.h"
#include "software/software_messages.h"
#include "software/winget_table.h"

namespace {

constexpr const wchar_t* kWingetListCommand =
    L"winget list --accept-source-agreements --disable-interactivity";

}  // namespace

std::string RunWingetCapture(const std::wstring& command) {
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  if (!pipe) return {};
  const HiddenProcess child = StartHiddenProcess(command, pipe->write.get());
  if (!child.process) return {};
  pipe->write.reset();
  return ReadOutput(pipe->read.get(), 4095);
}

void getSoftwareUpdates(int request_id) {
  PostJsonToJs(
      SoftwareUpdatesReply(request_id, ParseSoftwareUpdates(RunWingetCapture(kWingetUpgradeCommand))));
}

void getInstalledApps(int request_id) {
  PostJsonToJs(InstalledAppsReply(request_id, ParseInstalledApps(RunWingetCapture(kWingetListCommand))));
}
