#include "exec/streaming_command_win.h"

#include <utility>

#include "base/page.h"
#include "exec/hidden_process_win.h"
#include "exec/line_cutter.h"
#include "exec/streaming_command.h"

namespace {

constexpr DWORD kChunkBytes = 1023;

}  // namespace

void runPingDiagnostic(int request_id, const std::string& type, const std::string& target) {
  RunStreamingCommand(BuildDiagnosticCommand(type, target), request_id);
}

void RunStreamingCommand(const std::wstring& command, int request_id) {
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  if (!pipe) return;
  HiddenProcess child = StartHiddenProcess(L"cmd.exe /c " + command, pipe->write.get());
  pipe->write.reset();  // Otherwise the read end would never reach its end.
  if (!child.process) {
    PostJsonToJs(BuildStreamStartFailure());
    return;
  }

  LineCutter cutter(LineEnding::kLineFeed);
  ReadChunks(pipe->read.get(), kChunkBytes, [&](std::string_view chunk) {
    for (const OutputLine& line : cutter.Add(UpToZero(chunk)))
      PostJsonToJs(BuildStreamLine(request_id, line.text));
  });
  const DWORD exit_code = TakeExitCode(std::move(child));
  PostJsonToJs(BuildStreamExit(exit_code));
}
