#include "service/requests_win.h"

#include <algorithm>
#include <exception>

#include "base/exe_directory.h"
#include "base/handle_win.h"
#include "base/path_names.h"
#include "base/text.h"
#include "exec/line_cutter.h"
#include "exec/service_protocol.h"
#include "net/environment_win.h"
#include "net/hosts_file.h"
#include "service/event_log_win.h"
#include "service/stall_guard_win.h"
#include "service/tool_text.h"
#include "service/tool_win.h"
#include "service/topics_win.h"

namespace {

using nlohmann::json;

constexpr wchar_t kOwnKey[] = L"SOFTWARE\\Varnel";
constexpr wchar_t kEnvironmentPath[] = L"System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr int kRefusedCode = 5;     // ERROR_ACCESS_DENIED
constexpr int kNotStartedCode = 1;  // the same code as in the program itself
constexpr std::string_view kRefusedText = "The request was refused.";
constexpr std::string_view kFailedText = "It could not be done.";
constexpr std::string_view kUnscheduledText = "It could not be done. Nothing is scheduled now.";

// The result of a request. `is_refused`: a rule forbids it, and nothing was done.
struct Outcome {
  bool success = false;
  bool is_refused = false;
  json members = json::object();
};
const Outcome kRefusal = {false, true, json::object()};

Outcome Done(bool success) {
  return {success, false, json::object()};
}

std::optional<std::wstring> WideText(const PeerRequest& request, std::string_view name) {
  const std::optional<std::string> text = request.Text(name);
  return text ? std::optional(Utf8ToWide(*text)) : std::nullopt;
}

std::wstring OwnFile(const wchar_t* name) {
  return GetExeDirectory() + L"\\" + name;
}

// Returns true if the value is set to anything but 0, or cannot be read.
bool RequiresElevation() {
  DWORD value = 0, size_bytes = sizeof(value);
  const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kOwnKey, L"RequireElevation", RRF_RT_REG_DWORD,
                                      nullptr, &value, &size_bytes);
  return status == ERROR_SUCCESS ? value != 0
                                 : status != ERROR_FILE_NOT_FOUND && status != ERROR_PATH_NOT_FOUND;
}

// --- one function per action ---

Outcome GetHostsFile(const PeerRequest&, const Peer&) {
  const std::optional<std::string> bytes = ReadHostsFile();
  return bytes ? Outcome{true, false, {{"content", FileTextToUtf8(*bytes)}}} : Done(false);
}

Outcome SaveHosts(const PeerRequest& request, const Peer&) {
  const std::optional<std::string> content = request.Text("content");
  if (!content || content->size() > kMaxHostsBytes) return kRefusal;
  return Done(SaveHostsFile(*content));
}

Outcome SaveSystemEnv(const PeerRequest& request, const Peer&) {
  const std::optional<std::wstring> name = WideText(request, "name"), value = WideText(request, "value");
  const std::optional<bool> is_delete = request.Flag("is_delete");
  if (!name || !value || !is_delete || !MayChangeVariable(*name, *value, *is_delete)) return kRefusal;
  return Done(WriteEnvVariable(HKEY_LOCAL_MACHINE, kEnvironmentPath, *name, *value, *is_delete));
}

Outcome GetDevServices(const PeerRequest&, const Peer&) {
  return {true, false, {{"services", ListDevServices()}}};
}

Outcome ControlService(const PeerRequest& request, const Peer&) {
  const std::optional<std::wstring> name = WideText(request, "service_type");
  const std::optional<ServiceCommand> command = ParseServiceCommand(request.Text("command").value_or(""));
  if (!name || !command || !IsDevService(*name)) return kRefusal;
  return Done(ControlDevService(*name, *command));
}

Outcome SetHibernation(const PeerRequest& request, const Peer&) {
  const std::optional<bool> is_on = request.Flag("enabled");
  if (!is_on) return kRefusal;
  return Done(RunsWell(L"powercfg.exe", *is_on ? L"/hibernate on" : L"/hibernate off"));
}

Outcome GetJunkSizes(const PeerRequest&, const Peer&) {
  const StallGuard guard;
  return {true, false, MeasureMachineJunk()};
}

Outcome Clean(const PeerRequest& request, const Peer& peer) {
  const std::optional<JunkFlags> flags = ReadJunkFlags(request);
  if (!flags) return kRefusal;
  const StallGuard guard;
  CleanJunk(AllowedJunk(*flags, peer.facts, RequiresElevation()), peer);
  return Done(true);
}

Outcome ToggleScheduleClean(const PeerRequest& request, const Peer&) {
  const std::optional<bool> is_on = request.Flag("enabled");
  const std::optional<std::wstring> program = WideText(request, "exePath");
  if (!is_on || !program || !IsOwnFile(*program, OwnFile(L"Varnel.exe"))) return kRefusal;
  if (!*is_on) return Done(UnscheduleCleaning());
  const Scheduled result = ScheduleCleaning(OwnFile(L"Varnel.exe"));
  if (result == Scheduled::kNo) return {false, false, {{"error", kUnscheduledText}}};
  return Done(result == Scheduled::kYes);
}

Outcome ToggleStartup(const PeerRequest& request, const Peer&) {
  const std::optional<std::wstring> name = WideText(request, "name");
  const std::optional<bool> is_on = request.Flag("enable");
  if (!name || !is_on || !IsStartupName(*name)) return kRefusal;
  return Done(SwitchMachineStartup(*name, *is_on));
}

Outcome CleanLeftoverPath(const PeerRequest& request, const Peer&) {
  const std::optional<std::wstring> path = WideText(request, "path");
  if (!path || !MayRemoveFolder(*path, FindProgramFolders(), IsSamePath)) return kRefusal;
  const StallGuard guard;
  return Done(RemoveLeftoverFolder(*path));
}

Outcome CleanMachineKey(const PeerRequest& request, const Peer&) {
  const std::optional<std::wstring> sub_key = WideText(request, "subKey");
  const auto names = sub_key ? RemovableKey(*sub_key) : std::nullopt;
  if (!names) return kRefusal;
  return Done(RemoveMachineKey(*names));
}

Outcome RestartInSafeMode(const PeerRequest&, const Peer&) {
  if (!RunsWell(L"bcdedit.exe", L"/set {current} safeboot minimal")) return Done(false);
  if (RunsWell(L"shutdown.exe", L"/r /t 10")) return Done(true);
  RunsWell(L"bcdedit.exe", L"/deletevalue {current} safeboot");
  return Done(false);
}

// Cuts a tool's output into lines and sends each line as a record.
class Records {
 public:
  explicit Records(const Answer& answer) : answer_(answer) {}
  void Cut(std::string_view chunk) {
    for (const OutputLine& line : cutter_.Add(chunk)) Line(ConsoleTextToUtf8(line.text));
  }
  void Line(std::string_view text) const { answer_.send(json{{"type", "stdout"}, {"message", text}}.dump()); }
  void Exit(int64_t code) const { answer_.send(json{{"type", "exit"}, {"code", code}}.dump()); }

 private:
  const Answer& answer_;
  LineCutter cutter_{LineEnding::kReturnOrLineFeed};
};

// Runs to its end even without the peer: half a driver is worse than one installed unwatched.
Outcome InstallDriver(const PeerRequest& request, const Answer& answer) {
  const std::optional<std::string> title = request.Text("title");
  const std::optional<std::wstring> script = WideText(request, "scriptPath");
  const std::wstring own_script = OwnFile(L"update_driver.ps1");
  if (!title || !script || !IsDriverTitle(*title) || !IsOwnFile(*script, own_script)) return kRefusal;
  Records records(answer);
  const std::optional<DWORD> code =
      RunSystemTool(L"WindowsPowerShell\\v1.0\\powershell.exe",
                    L"-NoProfile -NonInteractive -ExecutionPolicy Bypass -File \"" + own_script +
                        L"\" -UpdateTitle \"" + Utf8ToWide(*title) + L"\"",
                    [&](std::string_view chunk) { records.Cut(chunk); });
  records.Exit(code.value_or(kNotStartedCode));
  return Done(code == DWORD{0});
}

Outcome VerifySystemFiles(const PeerRequest&, const Answer& answer) {
  Records components(answer), files(answer);
  ToolText text;
  const std::optional<DWORD> first = RunSystemTool(
      L"dism.exe", L"/Online /Cleanup-Image /CheckHealth",
      [&](std::string_view chunk) { components.Cut(chunk); }, answer.peer_gone);
  if (WaitForSingleObject(answer.peer_gone, 0) == WAIT_OBJECT_0) return Done(false);
  const std::optional<DWORD> second = RunSystemTool(
      L"sfc.exe", L"/verifyonly", [&](std::string_view chunk) { files.Cut(text.Add(chunk)); },
      answer.peer_gone);
  const DWORD code = first.value_or(kNotStartedCode) != 0 ? first.value_or(kNotStartedCode)
                                                          : second.value_or(kNotStartedCode);
  files.Exit(code);
  return Done(code == 0);
}

// --- the table ---

struct Row {
  std::string_view action;
  Who who;
  Outcome (*reply)(const PeerRequest&, const Peer&);  // null for a stream
  Outcome (*stream)(const PeerRequest&, const Answer&) = nullptr;
};

constexpr Row kRows[] = {
    {"get_hosts_file", Who::kAnyone, GetHostsFile},
    {"get_dev_services", Who::kAnyone, GetDevServices},
    {"getJunkSizes", Who::kAnyone, GetJunkSizes},
    {"save_hosts_file", Who::kAdministrator, SaveHosts},
    {"save_system_env", Who::kAdministrator, SaveSystemEnv},
    {"control_dev_service", Who::kAdministrator, ControlService},
    {"set_hibernation", Who::kAdministrator, SetHibernation},
    {"cleanJunk", Who::kOwnProgram, Clean},
    {"toggleScheduleClean", Who::kAdministrator, ToggleScheduleClean},
    {"toggleHKLMStartup", Who::kAdministrator, ToggleStartup},
    {"cleanLeftoverPath", Who::kAdministrator, CleanLeftoverPath},
    {"cleanHKLMRegistry", Who::kAdministrator, CleanMachineKey},
    {"safemodeReboot", Who::kAdministrator, RestartInSafeMode},
    {"installDriver", Who::kAdministrator, nullptr, InstallDriver},
    {"sfcVerify", Who::kAdministrator, nullptr, VerifySystemFiles},
};

// Returns the names in the request, without anything long or secret.
std::wstring Named(const PeerRequest& request) {
  std::wstring text;
  for (const auto& [member, value] : request.data) {
    if (member == "content" || member == "value") continue;
    const bool* flag = std::get_if<bool>(&value);
    text += Utf8ToWide((text.empty() ? ": " : ", ") + Printable(member)) + L"=" +
            (flag ? std::wstring(*flag ? L"true" : L"false")
                  : PrintableName(Utf8ToWide(std::get<std::string>(value))));
  }
  return text;
}

void Log(WORD type, const char* what, const PeerRequest& request, const Peer& peer) {
  WriteEvent(type, Utf8ToWide(Printable(request.action) + " " + what) + L", asked by " +
                       PrintableName(peer.user) + L" with " + PrintableName(peer.image) + Named(request));
}

Outcome Run(const Row& row, const PeerRequest& request, const Peer& peer, const Answer& answer) try {
  return row.stream ? row.stream(request, answer) : row.reply(request, peer);
} catch (const std::exception&) {
  return Done(false);  // out of memory
}

void Refuse(bool is_stream, std::string_view why, const Answer& answer) {
  if (!is_stream) return answer.send(FailedServiceReply(why).dump());
  const Records records(answer);
  records.Line(why);
  records.Exit(kRefusedCode);
}

}  // namespace

void HandleRequest(const PeerRequest& request, const Peer& peer, const Answer& answer) {
  const auto* row = std::ranges::find(kRows, request.action, &Row::action);
  if (row == std::end(kRows)) {
    Log(EVENTLOG_WARNING_TYPE, "is unknown", request, peer);
    return Refuse(false, "Unknown action", answer);
  }
  if (const std::optional<std::string> why = WhyRefused(row->who, peer.facts, RequiresElevation())) {
    Log(EVENTLOG_WARNING_TYPE, "was refused", request, peer);
    return Refuse(row->stream, *why, answer);
  }
  const Outcome outcome = Run(*row, request, peer, answer);
  if (outcome.is_refused) {
    Log(EVENTLOG_WARNING_TYPE, "was refused for what it names", request, peer);
    return Refuse(row->stream, kRefusedText, answer);
  }
  if (row->who != Who::kAnyone)
    Log(outcome.success ? EVENTLOG_INFORMATION_TYPE : EVENTLOG_ERROR_TYPE,
        outcome.success ? "was done" : "failed", request, peer);
  if (row->stream) return;
  json reply = outcome.success ? json::object() : FailedServiceReply(kFailedText);
  reply.update(outcome.members);
  reply["success"] = outcome.success;
  answer.send(reply.dump());
}
