#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Path of what is so named below System32.
std::wstring SystemPath(std::wstring_view name);

// Runs a tool of System32 with these arguments, hidden, in System32, with the system's own environment and no
// inherited handle but its output. `on_output` gets its output as it comes. When `cancel` is signalled before
// the tool has ended, it is ended with all that it has started. Returns its exit code; nothing when it could not
// be started.
std::optional<DWORD> RunSystemTool(std::wstring_view tool, const std::wstring& arguments,
                                   const std::function<void(std::string_view chunk)>& on_output = {},
                                   HANDLE cancel = nullptr);

// The same; true when it ended with 0.
bool RunsWell(std::wstring_view tool, const std::wstring& arguments);
