#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// Posts the items of the user's "Run" key, then those of the machine's, each in the registry's order.
// Leaves out values that are not text, are empty or exceed 1024 bytes, and names of 256 units and more.
// UI thread.
void getStartupItems(int request_id);

// Switches an item on or off; the machine's through the helper service. Texts are UTF-8. Worker body.
void toggleStartupItem(int request_id, const std::string& scope, const std::string& name, bool enabled);

// Writes the item's value to the approval list: the user's for the scope "HKCU", the machine's for any
// other. Returns false if the list's key cannot be opened; it is not created. A failed write goes
// unreported.
bool SetStartupApproved(const std::wstring& scope, const std::wstring& name, bool enable);

// A program that a "Run" key starts at logon.
struct StartupItem {
  std::wstring name;           // of the registry value
  std::wstring command;        // its data; environment strings in it are not expanded
  std::wstring registry_path;  // of the key, below the hive
  std::wstring scope;          // "HKCU" or "HKLM"
  bool enabled = true;
  std::wstring impact;  // "High", "Medium" or "Low"
};

// Estimates the effect on the logon from words in the command line.
//   C:\Program Files\Steam\steam.exe -silent: "High"     C:\Tools\FooUpdater.exe: "Medium"
std::wstring EstimateImpact(const std::wstring& command);

// The record that the system's start-up manager keeps about an item: a binary value whose first byte is
// 2 if the item is enabled.
//   03 00 00 00 17 79 bd 01 17 d9 d1 01: disabled, and when
using ApprovalValue = std::array<uint8_t, 12>;
ApprovalValue MakeApprovalValue(bool enable);
// Returns true if the first byte of a binary value disables the item. `type` is the registry's type
// number. A value that is empty or not binary disables nothing.
bool IsDisabledByApproval(uint32_t type, std::span<const uint8_t> data);

// Returns the rows of the page's table.
nlohmann::json ToJson(const std::vector<StartupItem>& items);
