#pragma once

#include <string>
#include <string_view>

// Pings `target` or looks it up (the type "dns"), both UTF-8, in a hidden command interpreter and posts each
// line that it prints as soon as it is complete, then the exit message. The exit code is read as soon as the
// output ends: 259 if the interpreter still runs then. There is no time limit. Posts nothing if there is no
// pipe. Worker body.
void runPingDiagnostic(int request_id, const std::string& type, const std::string& target);

// Returns "nslookup <target>" for the type "dns" exactly, "ping -n 4 <target>" for any other. The target is
// appended as it stands: whatever the user types reaches the command interpreter, on purpose.
std::wstring BuildDiagnosticCommand(std::string_view type, std::string_view target);
