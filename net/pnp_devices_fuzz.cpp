#include "net/pnp_devices.h"

#include <cstdlib>

#include <nlohmann/json.hpp>

#include "testing/fuzz_target.h"

// Whatever PowerShell prints, the message can be built and holds texts only.
FUZZ_TARGET(pnp_devices, bytes) {
  const nlohmann::json message = nlohmann::json::parse(BuildPnpDevices(1, bytes));
  if (!message["success"] && !message["devices"].empty()) std::abort();
  for (const nlohmann::json& device : message["devices"])
    for (const nlohmann::json& member : device)
      if (!member.is_string()) std::abort();
}
