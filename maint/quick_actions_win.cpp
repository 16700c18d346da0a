#include "maint/quick_actions_win.h"

#include <windows.h>
#include <tlhelp32.h>

#include <string>

#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"
#include "exec/command_runner_win.h"
#include "exec/service_pipe_win.h"
#include "exec/tool_run.h"
#include "maint/quick_actions.h"

namespace {

void EndExplorers() {
  const SnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) return;
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
       more = Process32NextW(snapshot.get(), &entry))
    if (IsExplorer(entry.szExeFile)) TerminateProcessById(entry.th32ProcessID);
}

void DeleteIconCaches() {
  wchar_t local_app_data[32767] = {};
  const DWORD length = GetEnvironmentVariableW(L"LOCALAPPDATA", local_app_data, 32767);
  if (length == 0) return;
  const std::wstring folder = std::wstring(local_app_data, length) + L"\\Microsoft\\Windows\\Explorer\\";
  WIN32_FIND_DATAW found = {};
  const FindHandle walk(FindFirstFileW((folder + L"*").c_str(), &found));
  if (!walk) return;
  do {
    if (IsIconCacheFile(found.cFileName)) DeleteFileW((folder + found.cFileName).c_str());
  } while (FindNextFileW(walk.get(), &found));
}

bool StartExplorer() {
  wchar_t command[] = L"C:\\Windows\\explorer.exe";
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  // A shell that stood in this program's folder would keep it from being removed.
  if (!CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, L"C:\\Windows", &startup,
                      &process))
    return false;
  const KernelHandle process_handle(process.hProcess), thread_handle(process.hThread);
  return true;
}

}  // namespace

void flushDns(int request_id) {
  PostJsonToJs(
      BuildQuickActionReply(request_id, true, ConsoleTextToUtf8(CaptureTool(L"ipconfig /flushdns"))));
}

bool RebuildIconCache() {
  EndExplorers();
  Sleep(500);  // until Explorer has let go of its files
  DeleteIconCaches();
  return StartExplorer();
}

void rebuildIcons(int request_id) {
  PostJsonToJs(BuildRebuildIconsReply(request_id, RebuildIconCache()));
}

void sfcVerify(int request_id) {
  PostJsonToJs(BuildFileCheckStatus(request_id));
  if (!EnsureServiceOrNotify()) {
    PostJsonToJs(BuildFileCheckExit(request_id, 1, "Pomocná služba neběží."));
    return;
  }
  const ServiceSession session =
      RunServiceSession("sfcVerify", nlohmann::json::object(),
                        [&](const std::string& line) { PostJsonToJs(BuildFileCheckLine(request_id, line)); });
  if (!session.connected)
    PostJsonToJs(BuildFileCheckExit(request_id, 1, "Nepodařilo se připojit k pomocné službě."));
  else if (session.exit)
    PostJsonToJs(BuildFileCheckExit(request_id, session.exit->code, FileCheckResultText(session.exit->code)));
}

void safemodeReboot(int request_id) {
  const bool success = SendServiceCommand("safemodeReboot", {});
  PostJsonToJs(BuildSafeModeReply(request_id, success));
}
