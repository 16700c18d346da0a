#include "exec/command_runner.h"

#include <utility>

#include "base/trace.h"
#include "exec/hidden_process_win.h"

namespace {

constexpr DWORD kChunkBytes = 4095;
constexpr DWORD kHangTimeoutMs = 10'000;

}  // namespace

CmdResult ExecuteCmd(const std::wstring& command) {
  Trace(L"ExecuteCmd starting for: " + command);
  CmdResult result;
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  if (!pipe) {
    Trace(L"CreatePipe failed!");
    return result;
  }

  Trace(L"Calling CreateProcessW...");
  HiddenProcess child = StartHiddenProcess(command, pipe->write.get());
  if (!child.process) {
    result.error = child.error;
    Trace(L"CreateProcessW failed. Error code: " + std::to_wstring(result.error));
    pipe->write.release();  // By design, only the read end is closed if nothing was started.
    return result;
  }
  Trace(L"CreateProcessW succeeded. Closing write pipe handle...");
  pipe->write.reset();  // Otherwise the read end would never report the end of the output.

  Trace(L"Reading stdout pipe loop starting...");
  result.output = ReadOutput(pipe->read.get(), kChunkBytes);

  Trace(L"ReadFile loop finished. Waiting for process to terminate...");
  if (WaitForSingleObject(child.process.get(), kHangTimeoutMs) == WAIT_TIMEOUT) {
    Trace(L"Process hung! Terminating process...");
    TerminateProcess(child.process.get(), 1);
  } else {
    Trace(L"Process finished. Getting exit code...");
  }
  result.exit_code = TakeExitCode(std::move(child));
  result.started = true;
  Trace(L"ExecuteCmd finished. Exit code: " + std::to_wstring(result.exit_code));
  return result;
}
