#pragma once

#include <string>

inline constexpr wchar_t kServiceName[] = L"VarnelService";

// What the setup program has done by a fresh copy of the service, as an administrator. Each is true when the machine is
// in the state wanted, whatever it was before.

// Registers the service (own process, LocalSystem, at the start of Windows, restarted twice when it fails), and
// its event source, and starts it. The folder is the one where the service is to run; false if others than
// administrators could replace its files.
bool InstallService(const std::wstring& folder);

// Stops it, so that its file can be replaced.
bool StopService();

// Stops and removes it with all that it has left on the machine.
bool RemoveService();

// Returns true if only administrators can replace the program's files in the folder, or a folder above them.
bool IsFolderSafe(const std::wstring& folder);
