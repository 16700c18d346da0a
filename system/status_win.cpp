#include "system/status_win.h"

#include <windows.h>

#include "base/page.h"
#include "exec/service_pipe_win.h"
#include "system/hardware_win.h"
#include "system/status.h"

void getStatus(int request_id) {
  const bool service_active = IsServiceRunning();
  PostJsonToJs(BuildStatus(request_id, service_active, CollectHardwareSpecs()).dump());
}

void PushStatus() {
  PushStatus({IsServiceRunning, CollectHardwareSpecs, [](unsigned milliseconds) { Sleep(milliseconds); }});
}
