#pragma once

#include "system/hardware.h"

// Collects everything afresh: registry, GetTokenInformation, EnumDisplayDevicesW, DXGI,
// GetSystemFirmwareTable, GetPhysicallyInstalledSystemMemory, GlobalMemoryStatusEx. Never fails; what cannot
// be read keeps its default. Any thread.
HardwareSpecs CollectHardwareSpecs();
