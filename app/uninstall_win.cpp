#include "app/uninstall.h"

#include <windows.h>
#include <shellapi.h>

#include "base/exe_directory.h"
#include "exec/elevated_start_win.h"

void uninstallAppSuite(int) {
  const std::wstring path = GetExeDirectory() + L"\\VarnelSetup.exe";
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
    MessageBoxW(nullptr, L"Chyba: Soubor VarnelSetup.exe nebyl nalezen v instalačním adresáři.",
                L"Chyba odinstalace", MB_ICONERROR);
    return;
  }
  if (!StartElevated(path, L"--uninstall", SEE_MASK_NOCLOSEPROCESS, SW_SHOW)) return;
  PostQuitMessage(0);
  ExitProcess(0);
}
