#pragma once

// Starts VarnelSetup.exe beside the executable, elevated, to remove the program, and ends this process.
// Shows a message box if the file is missing. Changes nothing if the user declines the elevation. Never
// replies. UI thread.
void uninstallAppSuite(int request_id);
