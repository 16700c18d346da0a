#pragma once

#include <cstdint>
#include <string>
#include <string_view>
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

// The stream of an installation ("update_stream") or of an uninstallation ("uninstall_stream"), whose
// messages have neither `isProgress` nor `rebootRequired`.
enum class PackageStream { kUpdate, kUninstall };

inline constexpr int64_t kRefusedArgumentCode = 999;
inline constexpr int64_t kNotStartedCode = 1;
// In an output line of the driver script: the machine must be restarted.
inline constexpr std::string_view kRebootMarker = "SYSTEM_REBOOT_REQUIRED";

std::string StreamStatusMessage(PackageStream stream, int request_id, std::string_view text);
std::string StreamOutputMessage(PackageStream stream, int request_id, std::string_view text,
                                bool is_progress);
std::string StreamExitMessage(PackageStream stream, int request_id, int64_t code, bool reboot_required);
