#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// How a hidden console tool went.
struct ToolRun {
  enum class Outcome { kNoPipe, kNotStarted, kEnded } outcome = Outcome::kNoPipe;
  uint32_t exit_code = 0;  // of kEnded
};

// When the exit code is read once the output has ended.
enum class ExitCode {
  kAtOnce,   // is 259 for a tool that still runs
  kAwaited,  // waits for the tool without a time limit
};

// Runs a complete command line (no shell is added) as a hidden child (CreatePipe, CreateProcessW) and hands
// on what it writes to its standard output and standard error, at most 1023 bytes at a time, unconverted.
// Blocks until the child and everything that inherited the pipe have closed it. For worker threads.
ToolRun RunTool(const std::wstring& command, ExitCode when,
                const std::function<void(std::string_view chunk)>& on_chunk);

// Runs a command line in the same way and returns all that it writes; of each read of at most 4095 bytes,
// what follows a zero byte is lost. Returns an empty string if it cannot be started.
std::string CaptureTool(const std::wstring& command);

// Returns the part of a chunk before its first zero byte.
inline std::string_view UpToZero(std::string_view chunk) {
  return chunk.substr(0, chunk.find('\0'));
}
