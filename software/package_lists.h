#pragma once

// Prints the table of packages that have a newer version.
inline constexpr const wchar_t* kWingetUpgradeCommand =
    L"winget upgrade --accept-source-agreements --disable-interactivity";

// Post the packages that have a newer version, and all installed packages. Both lists are empty without
// the package manager. Worker bodies.
void getSoftwareUpdates(int request_id);
void getInstalledApps(int request_id);
