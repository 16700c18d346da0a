#pragma once

// "winget upgrade": the table of packages that have a newer version.
inline constexpr const wchar_t* kWingetUpgradeCommand =
    L"winget upgrade --accept-source-agreements --disable-interactivity";

// Post the packages that have a newer version, and all installed ones. Without the package manager the lists
// are empty. Worker bodies.
void getSoftwareUpdates(int request_id);
void getInstalledApps(int request_id);
