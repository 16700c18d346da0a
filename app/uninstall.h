#pragma once

// Starts VarnelSetup.exe beside the executable, elevated, to remove the program, and ends this process; shows
// a message box if it is missing. Declined elevation changes nothing. Never replies. UI thread.
void uninstallAppSuite(int request_id);
