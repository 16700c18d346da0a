#pragma once

// Worker: looks for software updates, then for driver updates. Posts "scan_progress" messages and console
// lines; the last message has the status "done", whatever happens.
void startSystemScan(int request_id);

// Worker: looks for driver updates alone and posts "driver_updates".
void getDriverUpdates(int request_id);
