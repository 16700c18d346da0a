#include "software/install_streams.h"

#include <string_view>

#include "base/text.h"
#include "exec/line_cutter.h"
#include "exec/safe_argument.h"
#include "exec/service_pipe.h"
#include "exec/tool_run.h"
#include "exec/tool_stream.h"
#include "software/driver_scripts.h"

namespace {

using nlohmann::json;

constexpr int64_t kRefusedArgumentCode = 999;
constexpr int64_t kNotStartedCode = 1;
// Stands in an output line of the driver script if Windows must be restarted.
constexpr std::string_view kRebootMarker = "SYSTEM_REBOOT_REQUIRED";

bool HasRebootMarker(std::string_view line) {
  return line.find(kRebootMarker) != line.npos;
}

// The messages of an installation. Those of an uninstallation lack some members.
class PackageStream {
 public:
  enum class Kind { kUpdate, kUninstall };
  PackageStream(Kind kind, int request_id)
      : is_update_(kind == Kind::kUpdate),
        stream_(is_update_ ? "update_stream" : "uninstall_stream", request_id) {}

  // Returns false, having sent the exit message, if the argument must not go into a command line.
  bool Begin(const std::string& argument, const std::string& status_text) const {
    if (IsSafeCommandArgument(argument))
      stream_.Status(status_text + argument + "...");
    else
      Exit(kRefusedArgumentCode, false);
    return IsSafeCommandArgument(argument);
  }
  void Line(std::string_view text, bool is_progress) const {
    stream_.Line(text, is_update_ ? json{{"isProgress", is_progress}} : json::object());
  }
  void Exit(int64_t code, bool reboot_required) const {
    stream_.Exit(code, is_update_ ? json{{"rebootRequired", reboot_required}} : json::object());
  }
  LineEnding line_ending() const {
    return is_update_ ? LineEnding::kReturnOrLineFeed : LineEnding::kLineFeed;
  }

 private:
  bool is_update_;
  ToolStream stream_;
};

struct InstallerRun {
  ToolRun tool;
  bool saw_reboot_marker = false;
};

// Runs a tool to its end and forwards its lines.
InstallerRun RunInstaller(const PackageStream& stream, const std::wstring& command) {
  InstallerRun run;
  LineCutter cutter(stream.line_ending());
  run.tool = RunTool(command, ExitCode::kAwaited, [&](std::string_view chunk) {
    for (const OutputLine& line : cutter.Add(chunk)) {
      run.saw_reboot_marker = run.saw_reboot_marker || HasRebootMarker(line.text);
      stream.Line(ConsoleTextToUtf8(line.text), line.is_progress);
    }
  });
  return run;
}

void RunWinget(const PackageStream& stream, const std::string& verb, const std::string& id,
               const std::string& options) {
  const std::string command = "winget " + verb + " --id \"" + id + "\" " + options;
  const ToolRun run = RunInstaller(stream, Utf8ToWide(command)).tool;
  stream.Exit(run.outcome == ToolRun::Outcome::kEnded ? run.exit_code : kNotStartedCode, false);
}

void InstallDriverLocally(const PackageStream& stream, const std::string& title) {
  const auto [tool, saw_reboot_marker] = RunInstaller(
      stream, ScriptCommand(kUpdateDriverScript) + L" -UpdateTitle \"" + Utf8ToWide(title) + L"\"");
  if (tool.outcome == ToolRun::Outcome::kNotStarted) stream.Exit(kNotStartedCode, false);
  if (tool.outcome == ToolRun::Outcome::kEnded) stream.Exit(tool.exit_code, saw_reboot_marker);
}

// Returns false if the service cannot be reached.
bool InstallDriverThroughService(const PackageStream& stream, const std::string& title) {
  if (!EnsureServiceOrNotify()) return false;
  bool reboot_required = false;
  const json data = {{"title", title}, {"scriptPath", WideToUtf8(ScriptPath(kUpdateDriverScript))}};
  const ServiceSession session = RunServiceSession("installDriver", data, [&](const std::string& line) {
    reboot_required = reboot_required || HasRebootMarker(line);
    stream.Line(line, false);
  });
  if (session.exit) stream.Exit(session.exit->code, reboot_required || session.exit->reboot_required);
  return session.connected;
}

}  // namespace

void installSoftware(int request_id, const std::string& id) {
  const PackageStream stream(PackageStream::Kind::kUpdate, request_id);
  if (!stream.Begin(id, "Inicializuji instalaci pro balíček: ")) return;
  RunWinget(stream, "upgrade", id,
            "--silent --accept-package-agreements --accept-source-agreements --disable-interactivity");
}

void uninstallApp(int request_id, const std::string& id) {
  const PackageStream stream(PackageStream::Kind::kUninstall, request_id);
  if (!stream.Begin(id, "Inicializuji odinstalaci balíčku ")) return;
  RunWinget(stream, "uninstall", id, "--silent --accept-source-agreements --disable-interactivity");
}

void installDriver(int request_id, const std::string& title) {
  const PackageStream stream(PackageStream::Kind::kUpdate, request_id);
  if (!stream.Begin(title, "Spouštím instalaci ovladače přes Windows Update: ")) return;
  if (!InstallDriverThroughService(stream, title)) InstallDriverLocally(stream, title);
}
