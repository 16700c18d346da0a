#include "exec/tool_run.h"

#include <windows.h>

#include <optional>
#include <utility>

#include "exec/hidden_process_win.h"

namespace {

constexpr DWORD kRunChunkBytes = 1023;
constexpr DWORD kCaptureChunkBytes = 4095;

}  // namespace

ToolRun RunTool(const std::wstring& command, ExitCode when,
                const std::function<void(std::string_view chunk)>& on_chunk) {
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  if (!pipe) return {ToolRun::Outcome::kNoPipe};
  HiddenProcess child = StartHiddenProcess(command, pipe->write.get());
  if (!child.process) return {ToolRun::Outcome::kNotStarted};
  pipe->write.reset();  // Otherwise the read end would never report the end of the output.
  ReadChunks(pipe->read.get(), kRunChunkBytes, on_chunk);
  // The output ends slightly before the process does.
  if (when == ExitCode::kAwaited) WaitForSingleObject(child.process.get(), INFINITE);
  return {ToolRun::Outcome::kEnded, TakeExitCode(std::move(child))};
}

std::string CaptureTool(const std::wstring& command) {
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  if (!pipe) return {};
  const HiddenProcess child = StartHiddenProcess(command, pipe->write.get());
  if (!child.process) return {};
  pipe->write.reset();
  return ReadOutput(pipe->read.get(), kCaptureChunkBytes);
}
