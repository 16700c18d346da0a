#include "software/install_streams_win.h"

#include <windows.h>

#include <utility>

#include "base/page.h"
#include "base/text.h"
#include "exec/hidden_process_win.h"
#include "exec/line_cutter.h"
#include "exec/safe_argument.h"
#include "exec/service_pipe_win.h"
#include "software/driver_scripts_win.h"
#include "software/software_messages.h"

namespace {

constexpr DWORD kChunkBytes = 1023;

// Posts the messages of one run.
class Stream {
 public:
  Stream(PackageStream kind, int request_id) : kind_(kind), request_id_(request_id) {}

  // False, with the exit message sent, when the argument must not go into a command line.
  bool Begin(const std::string& argument, const std::string& status_text) const {
    if (!IsSafeCommandArgument(argument)) {
      Exit(kRefusedArgumentCode, false);
      return false;
    }
    PostJsonToJs(StreamStatusMessage(kind_, request_id_, status_text + argument + "..."));
    return true;
  }
  void Output(std::string_view line, bool is_progress) const {
    PostJsonToJs(StreamOutputMessage(kind_, request_id_, line, is_progress));
  }
  void Exit(int64_t code, bool reboot_required) const {
    PostJsonToJs(StreamExitMessage(kind_, request_id_, code, reboot_required));
  }
  LineEnding line_ending() const {
    return kind_ == PackageStream::kUpdate ? LineEnding::kReturnOrLineFeed : LineEnding::kLineFeed;
  }

 private:
  PackageStream kind_;
  int request_id_;
};

struct ToolRun {
  enum class Outcome { kNoPipe, kNotStarted, kEnded } outcome = Outcome::kNoPipe;
  DWORD exit_code = 0;
  bool saw_reboot_marker = false;
};

bool HasRebootMarker(std::string_view line) {
  return line.find(kRebootMarker) != line.npos;
}

// Runs a tool to its end and forwards its lines.
ToolRun RunTool(const Stream& stream, const std::wstring& command) {
  ToolRun run;
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  if (!pipe) return run;
  HiddenProcess child = StartHiddenProcess(command, pipe->write.get());
  run.outcome = child.process ? ToolRun::Outcome::kEnded : ToolRun::Outcome::kNotStarted;
  if (!child.process) return run;
  pipe->write.reset();
  LineCutter cutter(stream.line_ending());
  ReadChunks(pipe->read.get(), kChunkBytes, [&](std::string_view chunk) {
    for (const OutputLine& line : cutter.Add(chunk)) {
      run.saw_reboot_marker = run.saw_reboot_marker || HasRebootMarker(line.text);
      stream.Output(ConsoleTextToUtf8(line.text), line.is_progress);
    }
  });
  // The output ends a moment before the process does; until then its code reads as 259, "still active".
  WaitForSingleObject(child.process.get(), INFINITE);
  run.exit_code = TakeExitCode(std::move(child));
  return run;
}

void RunWinget(const Stream& stream, const std::string& verb, const std::string& id,
               const std::string& options) {
  const ToolRun run = RunTool(stream, Utf8ToWide("winget " + verb + " --id \"" + id + "\" " + options));
  stream.Exit(run.outcome == ToolRun::Outcome::kEnded ? run.exit_code : kNotStartedCode, false);
}

void InstallDriverLocally(const Stream& stream, const std::string& title) {
  const ToolRun run =
      RunTool(stream, ScriptCommand(kUpdateDriverScript) + L" -UpdateTitle \"" + Utf8ToWide(title) + L"\"");
  if (run.outcome == ToolRun::Outcome::kNoPipe) return;
  if (run.outcome == ToolRun::Outcome::kNotStarted) return stream.Exit(kNotStartedCode, false);
  stream.Exit(run.exit_code, run.saw_reboot_marker);
}

// False when the service cannot be reached.
bool InstallDriverThroughService(const Stream& stream, const std::string& title) {
  if (!EnsureServiceOrNotify()) return false;
  bool reboot_required = false;
  const nlohmann::json data = {{"title", title}, {"scriptPath", WideToUtf8(ScriptPath(kUpdateDriverScript))}};
  const ServiceSession session = RunServiceSession("installDriver", data, [&](const std::string& line) {
    reboot_required = reboot_required || HasRebootMarker(line);
    stream.Output(line, false);
  });
  if (session.exit) stream.Exit(session.exit->code, reboot_required || session.exit->reboot_required);
  return session.connected;
}

}  // namespace

void installSoftware(int request_id, const std::string& id) {
  const Stream stream(PackageStream::kUpdate, request_id);
  if (!stream.Begin(id, "Inicializuji instalaci pro balíček: ")) return;
  RunWinget(stream, "upgrade", id,
            "--silent --accept-package-agreements --accept-source-agreements --disable-interactivity");
}

void uninstallApp(int request_id, const std::string& id) {
  const Stream stream(PackageStream::kUninstall, request_id);
  if (!stream.Begin(id, "Inicializuji odinstalaci balíčku ")) return;
  RunWinget(stream, "uninstall", id, "--silent --accept-source-agreements --disable-interactivity");
}

void installDriver(int request_id, const std::string& title) {
  const Stream stream(PackageStream::kUpdate, request_id);
  if (!stream.Begin(title, "Spouštím instalaci ovladače přes Windows Update: ")) return;
  if (!InstallDriverThroughService(stream, title)) InstallDriverLocally(stream, title);
}
