#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Returns the path of a name below System32.
std::wstring SystemPath(std::wstring_view name);

// Runs a tool of System32 with these arguments: hidden, in System32, with the system's own environment
// and no inherited handle but its output. Passes the output to `on_output` as it arrives. If `cancel` is
// signalled before the tool has ended, ends it with everything that it has started. Returns its exit
// code, or nothing if it could not be started.
std::optional<DWORD> RunSystemTool(std::wstring_view tool, const std::wstring& arguments,
                                   const std::function<void(std::string_view chunk)>& on_output = {},
                                   HANDLE cancel = nullptr);

// Does the same. Returns true if the tool ended with 0.
bool RunsWell(std::wstring_view tool, const std::wstring& arguments);
