#pragma once

#include <string>

// Workers that change installed software. Each posts one "status" message, one "stdout" message per line
// of the tool's output as it arrives, and one "exit" message. The stream is "update_stream"
// (installSoftware, installDriver) or "uninstall_stream" (uninstallApp). An argument that could be read
// as command-line syntax is refused with exit code 999, and nothing is started.

// Upgrades the package with this ID.
void installSoftware(int request_id, const std::string& id);

// Removes the package with this ID.
void uninstallApp(int request_id, const std::string& id);

// Installs the driver update with this title in the helper service, or with the user's own rights if the
// service cannot be reached. If the service ends the session before its exit record, no "exit" message
// is posted.
void installDriver(int request_id, const std::string& title);
