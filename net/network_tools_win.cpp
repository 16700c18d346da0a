#include "net/network_tools.h"

#include "base/text.h"
#include "exec/line_cutter.h"
#include "exec/tool_run.h"
#include "exec/tool_stream.h"

namespace {

void RunStreamingCommand(const std::wstring& command, int request_id) {
  const ToolStream stream("ping_diagnostic_stream", request_id);
  LineCutter cutter(LineEnding::kLineFeed);
  const ToolRun run = RunTool(L"cmd.exe /c " + command, ExitCode::kAtOnce, [&](std::string_view chunk) {
    for (const OutputLine& line : cutter.Add(UpToZero(chunk))) stream.Line(ConsoleTextToUtf8(line.text));
  });
  if (run.outcome == ToolRun::Outcome::kEnded) stream.ExitUnnumbered(run.exit_code);
  if (run.outcome == ToolRun::Outcome::kNotStarted)
    stream.ExitUnnumbered(-1, {{"error", "Failed to start process"}});
}

}  // namespace

void runPingDiagnostic(int request_id, const std::string& type, const std::string& target) {
  RunStreamingCommand(BuildDiagnosticCommand(type, target), request_id);
}
