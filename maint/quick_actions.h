#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Worker bodies of the quick repairs.

// Runs "ipconfig /flushdns" and replies with its output, always with success.
void flushDns(int request_id);

void rebuildIcons(int request_id);

// Checks system files and components in the helper service and streams the output line by line.
void sfcVerify(int request_id);

// Asks the helper service to configure safe mode and restart.
void safemodeReboot(int request_id);

// Restarts the machine immediately and replies once the shutdown command has returned. UI thread.
void reboot(int request_id);

// Returns the text shown to the user after the service's file check has ended with `code`.
std::string FileCheckResultText(int64_t code);

// Returns true for Explorer's process name, in any case.
bool IsExplorer(std::wstring_view executable_name);

// Returns true for Explorer's icon and thumbnail cache files. The comparison is case-sensitive.
bool IsIconCacheFile(std::wstring_view file_name);
