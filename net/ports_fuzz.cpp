#include "net/ports.h"

#include <cstdlib>

#include "testing/fuzz_target.h"

// Whatever netstat prints, the message can be built.
FUZZ_TARGET(ports, bytes) {
  const nlohmann::json ports = ParseListeningPorts(bytes);
  for (const nlohmann::json& port : ports)
    if (port.size() != 5 || port["port"].get<std::string>().find(':') != std::string::npos) std::abort();
  if (nlohmann::json::parse(BuildOpenPorts(1, ports))["ports"] != ports) std::abort();
}
