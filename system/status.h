#pragma once

#include <functional>

#include <nlohmann/json.hpp>

#include "system/hardware.h"

// Collects the status and posts it: elevation, helper service, hardware texts. UI thread; takes about 250 ms
// without a helper service.
void getStatus(int request_id);

// Does the same unasked, for a worker after each completed navigation, and watches for the service as
// described below; takes up to about 35 s.
void PushStatus();

// What the status push needs of the machine.
struct StatusSources {
  std::function<bool()> is_service_running;
  std::function<HardwareSpecs()> collect_specs;
  std::function<void(unsigned milliseconds)> sleep;
};

// Posts the status with request id 0. Without a service and without elevation it then waits up to 15 times
// 2 s for the service and, once that has come, posts the same status again with the service active.
void PushStatus(const StatusSources& sources);

// Returns the members of the page's status message.
nlohmann::json DescribeStatus(bool service_active, const HardwareSpecs& specs);
