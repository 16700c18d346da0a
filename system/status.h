#pragma once

#include <functional>

#include <nlohmann/json.hpp>

#include "system/hardware.h"

// Collects the status (elevation, helper service, hardware texts) and posts it. UI thread; takes about
// 250 ms without a helper service.
void getStatus(int request_id);

// Posts the same without a request, on a worker after each completed navigation, and watches for the
// service as described below. Takes up to about 35 s.
void PushStatus();

// The status push's access to the machine.
struct StatusSources {
  std::function<bool()> is_service_running;
  std::function<HardwareSpecs()> collect_specs;
  std::function<void(unsigned milliseconds)> sleep;
};

// Posts the status with request ID 0. Without a service and without elevation, it then checks for the
// service up to 15 times, 2 s apart, and posts the same status again with the service active once it is
// running.
void PushStatus(const StatusSources& sources);

// Returns the members of the page's status message.
nlohmann::json DescribeStatus(bool service_active, const HardwareSpecs& specs);
