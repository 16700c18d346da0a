#include "maint/quick_actions.h"

#include <windows.h>

#include <string>

#include "base/environment_variable.h"
#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"
#include "exec/command_runner.h"
#include "exec/processes.h"
#include "exec/service_pipe.h"
#include "exec/tool_run.h"
#include "exec/tool_stream.h"

namespace {

void EndExplorers() {
  ForEachProcess([](uint32_t pid, const wchar_t* name) {
    if (IsExplorer(name)) TerminateProcessById(pid);
  });
}

void DeleteIconCaches() {
  const std::wstring local_app_data = ReadEnvironmentVariable(L"LOCALAPPDATA");
  if (local_app_data.empty()) return;
  const std::wstring folder = local_app_data + LR"(\Microsoft\Windows\Explorer\)";
  FolderListing listing(folder);
  while (const WIN32_FIND_DATAW* entry = listing.Next())
    if (IsIconCacheFile(entry->cFileName)) DeleteFileW((folder + entry->cFileName).c_str());
}

bool StartExplorer() {
  wchar_t command[] = L"C:\\Windows\\explorer.exe";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  // Starts the shell in the Windows folder: as the current directory, this program's folder could not be
  // removed.
  if (!CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, L"C:\\Windows", &startup,
                      &process))
    return false;
  const KernelHandle process_handle(process.hProcess), thread_handle(process.hThread);
  return true;
}

// Ends every Explorer process, deletes the icon and thumbnail caches under %LOCALAPPDATA% and starts
// Explorer again. Returns true if the new Explorer was started. Processes that cannot be ended and files
// that cannot be deleted are left.
bool RebuildIconCache() {
  EndExplorers();
  Sleep(500);  // until Explorer has released its files
  DeleteIconCaches();
  return StartExplorer();
}

void PostOutcome(int request_id, bool success, std::string_view message) {
  PostReply("quickAction", request_id, success, {{"message", message}});
}

}  // namespace

void flushDns(int request_id) {
  PostOutcome(request_id, true, ConsoleTextToUtf8(CaptureTool(L"ipconfig /flushdns")));
}

void rebuildIcons(int request_id) {
  const bool success = RebuildIconCache();
  PostOutcome(request_id, success,
              success ? "Mezipaměť ikon na ploše byla úspěšně obnovena a Windows Explorer byl restartován."
                      : "Nepodařilo se obnovit mezipaměť ikon.");
}

void sfcVerify(int request_id) {
  const ToolStream stream("sfc_stream", request_id);
  const auto end = [&](int64_t code, std::string_view message) { stream.Exit(code, {{"message", message}}); };
  stream.Status("Spouštím test integrity systémových souborů a komponent Windows přes pomocnou službu...");
  if (!EnsureServiceOrNotify()) return end(1, "Pomocná služba neběží.");
  const ServiceSession session = RunServiceSession("sfcVerify", nlohmann::json::object(),
                                                   [&](const std::string& line) { stream.Line(line); });
  if (!session.connected)
    end(1, "Nepodařilo se připojit k pomocné službě.");
  else if (session.exit)
    end(session.exit->code, FileCheckResultText(session.exit->code));
}

void safemodeReboot(int request_id) {
  const bool success = SendServiceCommand("safemodeReboot", {});
  PostOutcome(
      request_id, success,
      success ? "Systém byl úspěšně nakonfigurován pro spuštění do nouzového režimu. Restartuji počítač..."
              : "Nepodařilo se nastavit nouzový režim.");
}

void reboot(int request_id) {
  ExecuteCmd(L"shutdown /r /t 0");
  PostReply("reboot", request_id, true);
}
