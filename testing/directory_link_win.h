#pragma once

#include <windows.h>

#include <string>

#include "base/handle_win.h"

// Makes `link`, which must not exist, a junction to the folder `target` (full paths, plain ASCII). Wine 8 can
// store none, but shows a symbolic link of the system below as such: there it is one, and cannot be removed.
// False when nothing with FILE_ATTRIBUTE_REPARSE_POINT comes of it.
inline bool MakeDirectoryLink(const std::wstring& link, const std::wstring& target) {
  using UnixName = char*(CDECL*)(const wchar_t*);
  const auto unix_name = reinterpret_cast<UnixName>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  const auto quoted = [&](const std::wstring& path) {
    const std::string name = unix_name ? unix_name(path.c_str()) : std::string(path.begin(), path.end());
    return L" \"" + std::wstring(name.begin(), name.end()) + L"\"";
  };
  std::wstring command = unix_name ? L"ln -s" + quoted(target) + quoted(link)
                                   : L"cmd.exe /c mklink /J" + quoted(link) + quoted(target);
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (!CreateProcessW(unix_name ? LR"(\\?\unix\bin\ln)" : nullptr, command.data(), nullptr, nullptr, FALSE, 0,
                      nullptr, nullptr, &startup, &process))
    return false;
  const KernelHandle closed_process(process.hProcess), closed_thread(process.hThread);
  for (int i = 0; i < 500; ++i, Sleep(10)) {  // Wine gives no process handle to wait for
    const DWORD attributes = GetFileAttributesW(link.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
      return true;
  }
  return false;
}
