#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// The outcome of running a hidden console tool.
struct ToolRun {
  enum class Outcome { kNoPipe, kNotStarted, kEnded } outcome = Outcome::kNoPipe;
  uint32_t exit_code = 0;  // of kEnded
};

// When the exit code is read after the output has ended.
enum class ExitCode {
  kAtOnce,   // gives 259 for a tool that is still running
  kAwaited,  // waits for the tool without a time limit
};

// Runs a complete command line (no shell is added) as a hidden child (CreatePipe, CreateProcessW) and
// passes on its standard output and standard error, unconverted, at most 1023 bytes at a time. Blocks
// until the child and everything that inherited the pipe have closed it. For worker threads.
ToolRun RunTool(const std::wstring& command, ExitCode when,
                const std::function<void(std::string_view chunk)>& on_chunk);

// Runs a command line in the same way and returns everything that it writes, except that each read of at
// most 4095 bytes is cut at its first zero byte. Returns an empty string if the command cannot be
// started.
std::string CaptureTool(const std::wstring& command);

// Returns the part of a chunk before its first zero byte.
inline std::string_view UpToZero(std::string_view chunk) {
  return chunk.substr(0, chunk.find('\0'));
}
