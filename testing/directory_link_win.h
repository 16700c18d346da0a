#pragma once

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>

#include "base/handle_win.h"

// Returns the Unix path behind a Wine path, or an empty string on a real Windows.
inline std::wstring UnixName(const std::wstring& path) {
  using UnixName = char*(CDECL*)(const wchar_t*);
  const auto unix_name = reinterpret_cast<UnixName>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  const std::string name = unix_name ? unix_name(path.c_str()) : "";
  return std::wstring(name.begin(), name.end());
}

// Starts a program: the Unix program at `unix_program` if that is set. Wine gives no handle to wait for
// such a program.
inline bool StartProgram(const wchar_t* unix_program, std::wstring command) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  const std::wstring program = std::wstring(LR"(\\?\unix)") + (unix_program ? unix_program : L"");
  if (!CreateProcessW(unix_program ? program.c_str() : nullptr, command.data(), nullptr, nullptr, FALSE, 0,
                      nullptr, nullptr, &startup, &process))
    return false;
  const KernelHandle closed_process(process.hProcess), closed_thread(process.hThread);
  return true;
}

// Makes `link`, which must not exist, a junction to the folder `target` (full paths, plain ASCII). Wine
// 8 cannot store junctions but shows a symbolic link of the underlying system as one. There, `link` is
// such a link and cannot be removed. Returns false if nothing with FILE_ATTRIBUTE_REPARSE_POINT results.
inline bool MakeDirectoryLink(const std::wstring& link, const std::wstring& target) {
  const auto quoted = [](const std::wstring& path) { return L" \"" + path + L"\""; };
  const bool is_wine = !UnixName(target).empty();
  if (!(is_wine ? StartProgram(L"/bin/ln", L"ln -s" + quoted(UnixName(target)) + quoted(UnixName(link)))
                : StartProgram(nullptr, L"cmd.exe /c mklink /J" + quoted(link) + quoted(target))))
    return false;
  for (int i = 0; i < 500; ++i, Sleep(10)) {
    const DWORD attributes = GetFileAttributesW(link.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
      return true;
  }
  return false;
}

// While it lives, turns `victim` into the folder `moved`, into nothing and into the link `link`, as fast
// as renaming allows. Each is otherwise in its own place. Under Wine, a Perl loop does it, because Wine
// renames a link's target.
class FolderSwapper {
 public:
  FolderSwapper(const std::wstring& victim, const std::wstring& moved, const std::wstring& link) {
    if (UnixName(link).empty()) {
      thread_ = std::jthread([=](std::stop_token stop) {
        while (!stop.stop_requested())
          for (const auto& one : {&moved, &link}) {
            MoveFileW(one->c_str(), victim.c_str());
            MoveFileW(victim.c_str(), one->c_str());
          }
      });
      return;
    }
    go_ = link + L".go";
    CloseHandle(CreateFileW(go_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    const auto quoted = [](const std::wstring& path) { return L" \"" + UnixName(path) + L"\""; };
    StartProgram(L"/usr/bin/perl",
                 L"perl -e \"while (-e $ARGV[0]) { for (@ARGV[2, 3]) { rename $_, $ARGV[1];"
                 L" select undef, undef, undef, 0.0002; rename $ARGV[1], $_ } }\"" +
                     quoted(go_) + quoted(victim) + quoted(moved) + quoted(link));
  }
  ~FolderSwapper() {
    if (go_.empty()) return;
    DeleteFileW(go_.c_str());
    Sleep(200);  // until the loop has noticed
  }
  FolderSwapper(const FolderSwapper&) = delete;
  FolderSwapper& operator=(const FolderSwapper&) = delete;

 private:
  std::wstring go_;
  std::jthread thread_;
};
