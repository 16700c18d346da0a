#pragma once

#include <string>
#include <vector>

#include "system/hardware.h"
#include "system/telemetry.h"

// Lines of the page's terminal for the diagnostic action, in UTF-8.
std::vector<std::string> FormatDebugSpecs(const HardwareSpecs& specs);

// Numbers have six digits after the point; GB = 2^30 bytes.
std::vector<std::string> FormatDebugTelemetry(const TelemetrySample& sample);
