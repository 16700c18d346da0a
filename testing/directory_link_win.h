#pragma once

#include <windows.h>

#include <winioctl.h>

#include <string>

#include "base/handle_win.h"

// Junctions for tests. Wine 8 can neither store nor remove one, but shows a symbolic link of the system below
// as such; there it is made and removed with that system's own tools. Paths are full and plain ASCII.

inline bool IsDirectoryLink(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// The name below Wine, quoted; empty on Windows.
inline std::wstring QuotedUnixName(const std::wstring& path) {
  using UnixName = char*(CDECL*)(const wchar_t*);
  const auto unix_name = reinterpret_cast<UnixName>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  const size_t cut = path.rfind(L'\\');
  const char* folder = unix_name == nullptr ? nullptr : unix_name(path.substr(0, cut).c_str());
  if (folder == nullptr) return {};
  const std::string bytes = folder;
  return L" \"" + std::wstring(bytes.begin(), bytes.end()) + L"/" + path.substr(cut + 1) + L"\"";
}

// Runs "ln ..." or "rm ..." below Wine and waits until `link` is there or gone.
inline bool RunLinkTool(std::wstring command, const std::wstring& link, bool want_link) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  const std::wstring program = L"\\\\?\\unix\\bin\\" + command.substr(0, 2);
  if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &process))
    return false;
  for (int i = 0; i < 500 && IsDirectoryLink(link) != want_link; ++i)
    Sleep(10);  // Wine gives no process handle
  return IsDirectoryLink(link) == want_link;
}

// Makes `link`, which must not exist, a junction to the folder `target`. False when that leaves no entry with
// FILE_ATTRIBUTE_REPARSE_POINT.
inline bool MakeDirectoryLink(const std::wstring& link, const std::wstring& target) {
  if (!CreateDirectoryW(link.c_str(), nullptr)) return false;
  // A mount point's data: tag, length, reserved, offsets and lengths of both names in bytes, then the names.
  const std::wstring names = L"\\??\\" + target + L'\0' + target + L'\0';
  const auto bytes = [](size_t units) { return static_cast<WORD>(units * sizeof(wchar_t)); };
  const WORD head[] = {LOWORD(IO_REPARSE_TAG_MOUNT_POINT),
                       HIWORD(IO_REPARSE_TAG_MOUNT_POINT),
                       static_cast<WORD>(8 + bytes(names.size())),
                       0,
                       0,
                       bytes(target.size() + 4),
                       bytes(target.size() + 5),
                       bytes(target.size())};
  std::string data(reinterpret_cast<const char*>(head), sizeof(head));
  data.append(reinterpret_cast<const char*>(names.data()), bytes(names.size()));
  {
    const FileHandle folder(CreateFileW(link.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    DWORD returned = 0;
    DeviceIoControl(folder.get(), FSCTL_SET_REPARSE_POINT, data.data(), static_cast<DWORD>(data.size()),
                    nullptr, 0, &returned, nullptr);
  }
  if (IsDirectoryLink(link)) return true;
  const std::wstring unix_link = QuotedUnixName(link);
  return !unix_link.empty() && RemoveDirectoryW(link.c_str()) &&
         RunLinkTool(L"ln -s" + QuotedUnixName(target) + unix_link, link, true);
}

// Removes the link itself; its target stays.
inline bool RemoveDirectoryLink(const std::wstring& link) {
  RemoveDirectoryW(link.c_str());  // Wine may answer TRUE and leave it
  if (!IsDirectoryLink(link)) return true;
  const std::wstring unix_link = QuotedUnixName(link);
  return !unix_link.empty() && RunLinkTool(L"rm" + unix_link, link, false);
}
