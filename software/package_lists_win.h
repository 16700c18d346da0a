#pragma once

// "winget upgrade": the table of packages that have a newer version.
inline constexpr const wchar_t* kWingetUpgradeCommand =
    L"winget upgrade --accept-source-agreements --disable-interactivity";

// Workers: post "software_updates" and "apps". Without the package manager the lists are empty.
void getSoftwareUpdates(int request_id);
void getInstalledApps(int request_id);
