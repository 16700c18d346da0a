#pragma once

inline constexpr wchar_t kServiceName[] = L"VarnelService";

// What the setup program has done by the service itself, as an administrator. Each is true when the machine is
// in the state wanted, whatever it was before.

// Registers the service (own process, LocalSystem, at the start of Windows, restarted twice when it fails), and
// its event source, and starts it. Not where others than administrators could replace its files.
bool InstallService();

// Stops it, so that its file can be replaced.
bool StopService();

// Stops and removes it with all that it has left on the machine.
bool RemoveService();

// Whether only administrators can replace the files of this program's folder, or a folder above them.
bool IsOwnFolderSafe();
