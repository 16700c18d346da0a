#pragma once

#include <cstdint>
#include <string>

struct CmdResult {
  bool started = false;    // the child was created and waited for
  uint32_t error = 0;      // GetLastError() of a failed process creation
  uint32_t exit_code = 0;  // GetExitCodeProcess; 0 if the child never started
  std::string output;      // standard output and standard error as received, unconverted bytes
};

// Runs a complete command line (no shell is added) as a hidden child and waits for it (CreatePipe,
// CreateProcessW). Each read takes at most 4095 bytes and loses whatever follows a zero byte. Reading
// has no time limit: a child, or a grandchild that inherited the pipe, blocks the caller for as long as
// it keeps its output open. A child that keeps running for 10 s after closing its output is ended with
// exit code 1. Reports failures in the result. Reentrant; call it on a worker thread.
CmdResult ExecuteCmd(const std::wstring& command);
