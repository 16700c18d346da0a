#include "exec/elevated_start_win.h"

#include <shellapi.h>

#include "base/handle_win.h"

bool StartElevated(const std::wstring& path, const wchar_t* parameters, ULONG mask, int show) {
  SHELLEXECUTEINFOW start = {};
  start.cbSize = sizeof(start);
  start.fMask = mask;
  start.lpVerb = L"runas";
  start.lpFile = path.c_str();
  start.lpParameters = parameters;
  start.nShow = show;
  if (!ShellExecuteExW(&start)) return false;
  KernelHandle(start.hProcess).reset();
  return true;
}
