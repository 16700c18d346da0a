#pragma once

#include <string>
#include <vector>

#include "system/hardware.h"
#include "system/telemetry.h"

// Writes the hardware and one telemetry sample to the page's terminal, then replies. UI thread.
void debugSystem(int request_id);

// Returns the terminal's lines, in UTF-8.
std::vector<std::string> FormatDebugSpecs(const HardwareSpecs& specs);

// Returns the terminal's lines. Numbers have six digits after the point; GB = 2^30 bytes.
std::vector<std::string> FormatDebugTelemetry(const TelemetrySample& sample);
