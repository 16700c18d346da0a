#pragma once

#include <string>
#include <vector>

#include "software/driver_check.h"
#include "software/winget_table.h"

// The messages of this folder to the page, as complete JSON documents. Texts given in must be UTF-8.

std::string SoftwareUpdatesReply(int request_id, const std::vector<SoftwareUpdateEntry>& updates);
std::string InstalledAppsReply(int request_id, const std::vector<InstalledAppEntry>& apps);
std::string DriverUpdatesReply(int request_id, const DriverCheck& check);
// The script printed something else than JSON.
std::string DriverUpdatesFailedReply(int request_id, std::string_view reason);

// Messages "scan_progress" of a system scan, in the order in which they are sent.
std::string ScanningAppsMessage(int request_id);
std::string ScanningDriversMessage(int request_id, size_t software_count);
std::string ScanHeartbeatMessage(int request_id, int ticks);
std::string ScanDoneMessage(int request_id, const std::vector<SoftwareUpdateEntry>& software,
                            const DriverCheck& drivers);
std::string ScanFailedMessage(int request_id);
