#include <windows.h>

#include <mutex>

#include "base/handle_win.h"
#include "service/tool_win.h"
#include "service/topics_win.h"

namespace {

// Writes a new file, because an existing one may be a link or belong to another user.
bool WriteWhole(const std::wstring& path, const std::string& content) {
  DeleteFileW(path.c_str());
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  DWORD written = 0;
  return file &&
         WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr) &&
         written == content.size() && FlushFileBuffers(file.get());
}

bool Replace(const std::wstring& hosts, const std::wstring& fresh, const std::wstring& backup) {
  const DWORD attributes = GetFileAttributesW(hosts.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return GetLastError() == ERROR_FILE_NOT_FOUND && MoveFileExW(fresh.c_str(), hosts.c_str(), 0);
  // Some programs mark the file read-only, which Windows would treat as a refusal.
  if (attributes & FILE_ATTRIBUTE_READONLY)
    SetFileAttributesW(hosts.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  SetFileAttributesW(backup.c_str(), FILE_ATTRIBUTE_NORMAL);
  const bool is_done = ReplaceFileW(hosts.c_str(), fresh.c_str(), backup.c_str(), 0, nullptr, nullptr);
  // Restores the backup if the file was moved there but the new one could not take its place.
  if (!is_done && GetFileAttributesW(hosts.c_str()) == INVALID_FILE_ATTRIBUTES)
    MoveFileExW(backup.c_str(), hosts.c_str(), 0);
  if (attributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesW(hosts.c_str(), attributes);
  return is_done;
}

}  // namespace

bool SaveHostsFile(const std::string& content) {
  static std::mutex mutex;  // two concurrent saves would share the new file
  const std::lock_guard lock(mutex);
  const std::wstring hosts = SystemPath(L"drivers\\etc\\hosts"), fresh = hosts + L".varnel.new";
  const bool is_done = WriteWhole(fresh, content) && Replace(hosts, fresh, hosts + L".varnel.bak");
  if (!is_done) DeleteFileW(fresh.c_str());
  return is_done;
}
