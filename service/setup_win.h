#pragma once

#include <string>

inline constexpr wchar_t kServiceName[] = L"VarnelService";

// The tasks that the setup program has a fresh copy of the service do, as an administrator. Each returns
// true if the machine is in the wanted state afterwards, whatever it was before.

// Registers the service (own process, LocalSystem, started with Windows, restarted twice if it fails)
// and its event source, and starts it. It will run in the given folder. Returns false if anyone but
// administrators could replace its files.
bool InstallService(const std::wstring& folder);

// Stops the service and waits for its process, so that its file can be replaced.
bool StopService();

// Stops the service and removes it with everything that it has left on the machine. Takes every step,
// even if an earlier one fails.
bool RemoveService();

// Returns true if only administrators can replace the program's files in the folder or a folder above
// it.
bool IsFolderSafe(const std::wstring& folder);
