#pragma once

#include <string>

// "winget upgrade": the table of packages that have a newer version.
inline constexpr const wchar_t* kWingetUpgradeCommand =
    L"winget upgrade --accept-source-agreements --disable-interactivity";

// Everything that a command line writes to its standard output and standard error, unconverted, empty when it
// cannot be started (CreatePipe, CreateProcessW). Of each read of at most 4095 bytes, what follows a zero
// byte is lost. Neither a time limit nor the exit code is looked at.
std::string RunWingetCapture(const std::wstring& command);

// Workers: post "software_updates" and "apps". Without the package manager the lists are empty.
void getSoftwareUpdates(int request_id);
void getInstalledApps(int request_id);
