#pragma once

// Searches for software updates, then for driver updates. Posts "scan_progress" messages and console
// lines. The last message always has the status "done". Worker body.
void startSystemScan(int request_id);

// Searches for driver updates only and posts "driver_updates". Worker body.
void getDriverUpdates(int request_id);
