#pragma once

#include <string>
#include <string_view>

// Pings `target`, or looks it up if `type` is "dns" (both UTF-8), in a hidden command interpreter. Posts
// each output line as soon as it is complete, then the exit message. Reads the exit code as soon as the
// output ends, so it is 259 if the interpreter is still running. There is no time limit. Posts nothing
// if no pipe can be created. Worker body.
void runPingDiagnostic(int request_id, const std::string& type, const std::string& target);

// Returns "nslookup <target>" if the type is exactly "dns", otherwise "ping -n 4 <target>". The target
// is appended unchanged: by design, whatever the user types reaches the command interpreter.
std::wstring BuildDiagnosticCommand(std::string_view type, std::string_view target);
