#pragma once

#include <cstdint>

#include "app/dispatcher.h"

// Actions on the system that belong to no subsystem. All run on the UI thread.

// Opens the address in the member `url` of the request itself, not of its data (ShellExecuteW); none opens
// nothing. Replies with the action's name as received, whatever became of it.
void openUrl(Request& request);

// Replies "cpu_info" with the processor's name.
void getCPU(int32_t request_id);

// Starts VarnelSetup.exe beside the executable, elevated, to remove the program, and ends this process; a
// message box when there is none. Declined elevation changes nothing. Never replies.
void uninstallAppSuite(int request_id);

// Writes hardware and one telemetry sample to the page's terminal, then replies.
void debugSystem(int32_t request_id);

// Restarts the machine at once; replies when the shutdown command has returned.
void reboot(int32_t request_id);
