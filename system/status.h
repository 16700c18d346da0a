#pragma once

#include <functional>

#include <nlohmann/json.hpp>

#include "system/hardware.h"

// The page's status message: elevation, helper service, hardware texts.
nlohmann::json BuildStatus(int request_id, bool service_active, const HardwareSpecs& specs);

// What the status push needs of the machine.
struct StatusSources {
  std::function<bool()> is_service_running;
  std::function<HardwareSpecs()> collect_specs;
  std::function<void(unsigned milliseconds)> sleep;
};

// Posts the status unasked, with request id 0. Without a service and without elevation it then waits up to 15
// times 2 s for the service and posts the same status once more, now with the service active, when it has
// come.
void PushStatus(const StatusSources& sources);
