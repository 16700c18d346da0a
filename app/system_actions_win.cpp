#include "app/system_actions_win.h"

#include <windows.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "app/debug_report.h"
#include "base/exe_directory_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"
#include "exec/command_runner_win.h"
#include "system/hardware_win.h"
#include "system/telemetry_win.h"

namespace {

void SendLines(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) SendConsoleLog(line, "system-line");
}

}  // namespace

void openUrl(Request& request) {
  const std::string url = request.envelope.value("url", std::string());
  if (!url.empty()) ShellExecuteW(nullptr, L"open", Utf8ToWide(url).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  PostSuccess(request.action, request.request_id);
}

void getCPU(int32_t request_id) {
  PostSuccess("cpu_info", request_id, {{"cpu", WideToUtf8(CollectHardwareSpecs().cpu)}});
}

void uninstallAppSuite(int) {
  const std::wstring path = GetExeDirectory() + L"\\VarnelSetup.exe";
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
    MessageBoxW(nullptr, L"Chyba: Soubor VarnelSetup.exe nebyl nalezen v instalačním adresáři.",
                L"Chyba odinstalace", MB_ICONERROR);
    return;
  }
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof(info);
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpVerb = L"runas";
  info.lpFile = path.c_str();
  info.lpParameters = L"--uninstall";
  info.nShow = SW_SHOW;
  if (!ShellExecuteExW(&info)) return;
  KernelHandle(info.hProcess).reset();
  PostQuitMessage(0);
  ExitProcess(0);
}

void debugSystem(int32_t request_id) {
  SendLines({"[DebugSystem] Gathering system debug information..."});
  SendLines(FormatDebugSpecs(CollectHardwareSpecs()));
  SendLines(FormatDebugTelemetry(SampleTelemetry()));
  PostSuccess("debugSystem", request_id);
}

void reboot(int32_t request_id) {
  ExecuteCmd(L"shutdown /r /t 0");
  PostSuccess("reboot", request_id);
}
