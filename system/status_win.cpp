#include "system/status.h"

#include <windows.h>

#include "base/page.h"
#include "exec/service_pipe.h"

void getStatus(int request_id) {
  const bool service_active = IsServiceRunning();
  PostReply("status", request_id, true, DescribeStatus(service_active, CollectHardwareSpecs()));
}

void PushStatus() {
  PushStatus({IsServiceRunning, CollectHardwareSpecs, [](unsigned milliseconds) { Sleep(milliseconds); }});
}
