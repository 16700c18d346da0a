#pragma once

#include <string>

// Workers that change installed software. Each posts one "status" message, a "stdout" message a line of the
// tool's output as it comes, and one "exit" message: in "update_stream" (installSoftware, installDriver) or
// "uninstall_stream" (uninstallApp). An argument that could be read as command-line syntax is refused with
// exit code 999 and nothing is started.

// Upgrades the package with this identifier.
void installSoftware(int request_id, const std::string& id);

// Removes the package with this identifier.
void uninstallApp(int request_id, const std::string& id);

// Installs the driver update with this title: in the helper service, or with the user's own rights when it
// cannot be reached. When the service ends the session before its exit record, there is no "exit" message.
void installDriver(int request_id, const std::string& title);
