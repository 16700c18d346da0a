#pragma once

#include <cstdint>
#include <string>

struct CmdResult {
  bool started = false;    // the child was created and waited for
  uint32_t error = 0;      // GetLastError() of a failed process creation
  uint32_t exit_code = 0;  // GetExitCodeProcess; 0 when the child never started
  std::string output;      // standard output and standard error as they arrived, unconverted bytes
};

// Runs a complete command line (no shell is added) as a hidden child and waits for it (CreatePipe,
// CreateProcessW). Of each read of at most 4095 bytes, what follows a zero byte is lost. Reading has no time
// limit: a child, or a grandchild that inherited the pipe, blocks the caller for as long as it keeps its
// output open. A child that runs on 10 s after closing it is ended with exit code 1. Reentrant; for worker
// threads. Failures are reported in the result.
CmdResult ExecuteCmd(const std::wstring& command);
