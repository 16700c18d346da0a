#pragma once

#include <string>

// Worker body: pings `target` or looks it up ("dns"), both UTF-8; see BuildDiagnosticCommand and
// RunStreamingCommand.
void runPingDiagnostic(int request_id, const std::string& type, const std::string& target);

// Runs `command` in a hidden command interpreter (CreatePipe, CreateProcessW), posts each line of its two
// output streams as soon as it is complete, then the exit message. Its code is read as soon as the output
// ends, without waiting: 259 when the interpreter still runs then. Has no time limit. Posts nothing when
// there is no pipe. For worker threads.
void RunStreamingCommand(const std::wstring& command, int request_id);
