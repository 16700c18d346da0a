#include <windows.h>

#include <cstdio>
#include <iostream>
#include <string_view>
#include <thread>

#include "base/exe_directory.h"
#include "base/handle_win.h"
#include "service/event_log_win.h"
#include "service/pipe_server_win.h"
#include "service/setup_win.h"

// The entry point of VarnelService.exe. The service control manager starts it, or --console runs it in
// the foreground with the user's own rights until its standard input ends. The setup program calls it
// with --install FOLDER, --stop and --remove.

namespace {

constexpr DWORD kStopMs = 5'000;

KernelHandle stop_event, ended_event;
SERVICE_STATUS_HANDLE status_handle = nullptr;

// Serves until `stop_event` is signalled, and abandons whatever takes more than a few seconds after
// that. Returns the exit code.
DWORD RunServer() {
  static PipeServer server(stop_event.get());
  if (!server.Open()) {
    WriteEvent(EVENTLOG_ERROR_TYPE,
               L"Another program holds the pipe of the helper service. The service has stopped.");
    return ERROR_PIPE_BUSY;
  }
  std::thread([] {
    server.Serve();
    SetEvent(ended_event.get());
  }).detach();
  WriteEvent(EVENTLOG_INFORMATION_TYPE, L"ready");
  WaitForSingleObject(stop_event.get(), INFINITE);
  WaitForSingleObject(ended_event.get(), kStopMs);
  return ERROR_SUCCESS;
}

void ReportStatus(DWORD state, DWORD exit_code = ERROR_SUCCESS) {
  SERVICE_STATUS status = {};
  status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status.dwCurrentState = state;
  status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
  status.dwWin32ExitCode = exit_code;
  status.dwWaitHint = state == SERVICE_STOP_PENDING ? kStopMs + 1'000 : 0;
  SetServiceStatus(status_handle, &status);
}

DWORD WINAPI OnControl(DWORD control, DWORD, void*, void*) {
  if (control == SERVICE_CONTROL_INTERROGATE) return NO_ERROR;
  if (control != SERVICE_CONTROL_STOP && control != SERVICE_CONTROL_SHUTDOWN)
    return ERROR_CALL_NOT_IMPLEMENTED;
  ReportStatus(SERVICE_STOP_PENDING);
  SetEvent(stop_event.get());
  return NO_ERROR;
}

void WINAPI ServiceMain(DWORD, wchar_t**) {
  status_handle = RegisterServiceCtrlHandlerExW(kServiceName, OnControl, nullptr);
  if (status_handle == nullptr) return;
  if (!IsFolderSafe(GetExeDirectory())) {
    WriteEvent(
        EVENTLOG_ERROR_TYPE,
        L"Others than administrators may change the folder of the helper service. It has not been started.");
    ReportStatus(SERVICE_STOPPED, ERROR_ACCESS_DENIED);
    return;
  }
  ReportStatus(SERVICE_RUNNING);
  ReportStatus(SERVICE_STOPPED, RunServer());
}

int RunInForeground() {
  WriteEventsToConsole();
  std::thread([] {
    while (std::cin.get() != EOF) continue;
    SetEvent(stop_event.get());
  }).detach();
  return static_cast<int>(RunServer());
}

int RunAsService() {
  wchar_t name[] = L"VarnelService";
  const SERVICE_TABLE_ENTRYW services[] = {{name, ServiceMain}, {nullptr, nullptr}};
  if (StartServiceCtrlDispatcherW(services)) return 0;
  std::puts("This program is started by Windows. See --console.");
  return 1;
}

int Run(std::wstring_view argument, const std::wstring& folder) {
  if (argument.empty()) return RunAsService();
  if (argument == L"--console") return RunInForeground();
  if (argument == L"--install") return InstallService(folder) ? 0 : 1;
  if (argument == L"--stop") return StopService() ? 0 : 1;
  if (argument == L"--remove") return RemoveService() ? 0 : 1;
  return 2;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  // Loads libraries only from the system's folder.
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
  SetDllDirectoryW(L"");
  stop_event.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  ended_event.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  // Ends whatever still runs, before anything that it uses is destroyed.
  ExitProcess(static_cast<UINT>(Run(count > 1 ? arguments[1] : L"", count > 2 ? arguments[2] : L"")));
}
