#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "startup/startup_items.h"

// Items of the user's "Run" key, then of the machine's, each in the registry's order.
std::vector<StartupItem> GetStartupItems();

// Appends the items of one "Run" key (RegOpenKeyExW with KEY_READ, RegEnumValueW); nothing when it cannot be
// opened. Values that are not text, empty, longer than 1024 bytes or have names of 256 units and more are
// left out.
void ReadRunKey(HKEY hive, const std::wstring& path, const std::wstring& scope,
                std::vector<StartupItem>& items);

// Switches off those items of the hive's scope that its approval list has disabled.
void ApplyStartupApproval(std::vector<StartupItem>& items, HKEY hive);

// Writes the item's value into the approval list: of the user for the scope "HKCU", of the machine for any
// other. False when the list's key cannot be opened; it is not created. A failing write goes unnoticed.
bool SetStartupApproved(const std::wstring& scope, const std::wstring& name, bool enable);

// Action: lists the items and posts them. UI thread.
void getStartupItems(int request_id);

// Worker body: switches an item on or off, the machine's through the helper service. Texts are UTF-8.
void toggleStartupItem(int request_id, const std::string& scope, const std::string& name, bool enabled);
