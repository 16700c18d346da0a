#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/handle_win.h"

// The steps that every hidden console tool is run with. What differs between the runners (chunk size, zero
// bytes, who closes which end, waiting, messages) stands at each of them.

struct OutputPipe {
  KernelHandle read;   // stays in this process
  KernelHandle write;  // inheritable: the child's standard output and standard error
};

// Anonymous pipe of the default size (CreatePipe, SetHandleInformation); nothing when the system gives none.
std::optional<OutputPipe> CreateOutputPipe();

struct HiddenProcess {
  KernelHandle process, thread;
  DWORD error = ERROR_SUCCESS;  // of CreateProcessW when `process` is empty
};

// Starts a complete command line (no shell is added) without a console window, in this process's current
// directory and environment, both output streams on `output`, no standard input. Handles are inherited: every
// inheritable handle that is open at this moment goes along.
HiddenProcess StartHiddenProcess(const std::wstring& command, HANDLE output);

// Hands on what arrives at the pipe's read end, at most `chunk_bytes` (up to 4095) at a time, until a read
// fails or returns nothing: that is when the child and everything that inherited the write end have closed
// it. Blocks for as long as that takes.
void ReadChunks(HANDLE read_end, DWORD chunk_bytes,
                const std::function<void(std::string_view chunk)>& on_chunk);

// All that arrives at the read end: of each chunk what stands before its first zero byte.
std::string ReadOutput(HANDLE read_end, DWORD chunk_bytes);

// The exit code as it is now (GetExitCodeProcess), 259 for a child that still runs. Closes both handles.
DWORD TakeExitCode(HiddenProcess child);
