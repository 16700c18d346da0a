#pragma once

#include <string>

#include "system/telemetry.h"

// Takes one sample (GetSystemTimes, GlobalMemoryStatusEx, GetLogicalDriveStringsW, GetIfTable,
// GetAdaptersAddresses, GetSystemPowerStatus). Load and rates are against the previous call, whoever made it:
// process-wide values without a lock, so only the UI thread calls this. Never fails; what cannot be read
// stays 0.
TelemetrySample SampleTelemetry();

// Friendly name of the first adapter that is up and is neither loopback nor tunnel; "No Active Adapter" when
// there is none.
std::wstring FindActiveAdapterName();

// Action: takes a sample and posts it. UI thread.
void getTelemetry(int request_id);
