#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// A program that a "Run" key starts at logon.
struct StartupItem {
  std::wstring name;           // of the registry value
  std::wstring command;        // its data; environment strings in it are not expanded
  std::wstring registry_path;  // of the key, below the hive
  std::wstring scope;          // "HKCU" or "HKLM"
  bool enabled = true;
  std::wstring impact;  // "High", "Medium" or "Low"
};

// Estimated effect on the logon, from words in the command line.
//   C:\Program Files\Steam\steam.exe -silent: "High"     C:\Tools\FooUpdater.exe: "Medium"
std::wstring EstimateImpact(const std::wstring& command);

// What the system's start-up manager keeps about an item: a binary value whose first byte is 2 while the item
// is enabled.
//   03 00 00 00 17 79 bd 01 17 d9 d1 01: disabled, and when
using ApprovalValue = std::array<uint8_t, 12>;
ApprovalValue MakeApprovalValue(bool enable);
// `type` is the registry's type number. A value that is empty or not binary disables nothing.
bool IsDisabledByApproval(uint32_t type, std::span<const uint8_t> data);

// The page's message, one compact JSON document.
std::string BuildStartupItems(int request_id, const std::vector<StartupItem>& items);
