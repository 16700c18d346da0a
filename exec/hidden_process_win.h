#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/handle_win.h"

// The steps shared by every runner of a hidden console tool. The differences (chunk size, zero bytes,
// closing the ends, waiting, messages) are documented at each runner.

struct OutputPipe {
  KernelHandle read;   // stays in this process
  KernelHandle write;  // inheritable: the child's standard output and standard error
};

// Creates an anonymous pipe of the default size (CreatePipe, SetHandleInformation). Returns nothing if
// the system cannot create one.
std::optional<OutputPipe> CreateOutputPipe();

struct HiddenProcess {
  KernelHandle process, thread;
  DWORD error = ERROR_SUCCESS;  // of CreateProcessW if `process` is empty
};

// Starts a complete command line (no shell is added) without a console window or standard input, in this
// process's current directory and environment. Both output streams go to `output`. The child inherits
// every inheritable handle that is open at this moment.
HiddenProcess StartHiddenProcess(const std::wstring& command, HANDLE output);

// Passes on the data that arrives at the pipe's read end, at most `chunk_bytes` (up to 4095) at a time.
// Returns once a read fails or returns nothing, that is, once the child and everything that inherited
// the write end have closed it. Blocks until then.
void ReadChunks(HANDLE read_end, DWORD chunk_bytes,
                const std::function<void(std::string_view chunk)>& on_chunk);

// Returns everything that arrives at the read end, except that each chunk is cut before its first zero
// byte.
std::string ReadOutput(HANDLE read_end, DWORD chunk_bytes);

// Returns the current exit code (GetExitCodeProcess), which is 259 for a child that is still running.
// Closes both handles.
DWORD TakeExitCode(HiddenProcess child);
