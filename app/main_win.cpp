#include <windows.h>
#include <objbase.h>

#include <string>

#include "app/browser_host.h"
#include "app/main_window_win.h"
#include "base/worker.h"
#include "clean/junk.h"
#include "maint/update.h"

namespace {

// Makes cloud folders, whose files may be online only, look like ordinary ones. Windows marks them as
// reparse points, which no walk follows. Junctions and symbolic links keep that mark.
// RtlSetProcessPlaceholderCompatibilityMode exists since Windows 10 version 1803 and has no import
// library.
void DisguiseCloudPlaceholders() {
  constexpr char kDisguise = 1;  // PHCM_DISGUISE_PLACEHOLDER
  const auto set_mode = reinterpret_cast<char(NTAPI*)(char)>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlSetProcessPlaceholderCompatibilityMode")));
  if (set_mode) set_mode(kDisguise);
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR command_line, int show_command) {
  DisguiseCloudPlaceholders();
  const std::string arguments = command_line;
  if (arguments.find("--silent-clean") != arguments.npos) {
    CleanJunkCategories({true, true, true, true, true, true, true});
    return 0;
  }
  if (!CreateMainWindow(instance, show_command)) return 1;
  // The browser control needs a single-threaded apartment, and so do the shell extensions behind
  // ShellExecuteW.
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
  StartBrowser();
  StartWorker(DeleteDownloadedInstaller);
  const int exit_code = RunMessageLoop();
  // Ends any workers that still run, before anything that they use is destroyed.
  ExitProcess(static_cast<UINT>(exit_code));
}
