#include "maint/update.h"

#include <windows.h>
#include <objbase.h>
#include <wininet.h>

#include <exception>
#include <fstream>
#include <iterator>

#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"
#include "exec/elevated_start_win.h"
#include "maint/release_url.h"
#include "maint/version.h"

namespace {

struct InternetHandleKind {
  using Type = HINTERNET;
  static Type Invalid() { return nullptr; }
  static void Close(Type handle) { InternetCloseHandle(handle); }
};
using InternetHandle = Owned<InternetHandleKind>;

std::wstring UserAgent() {
  return L"Mozilla/5.0 (Windows NT 10.0; Win64; x64) Varnel/" + Utf8ToWide(kCurrentVersion);
}

std::wstring TemporaryFile(const wchar_t* name) {
  wchar_t folder[260] = {};
  GetTempPathW(260, folder);
  return std::wstring(folder) + name;
}

std::wstring DownloadedInstaller() {
  return TemporaryFile(L"VarnelUpdate.exe");
}

// Returns false only if a block could not be written in full. A failed read ends the copy just as the
// end of the body does.
bool CopyToFile(HINTERNET source, HANDLE file) {
  char block[16384];
  DWORD read = 0;
  while (InternetReadFile(source, block, sizeof(block), &read) && read > 0) {
    DWORD written = 0;
    if (!WriteFile(file, block, read, &written, nullptr) || written < read) return false;
  }
  return true;
}

// Downloads `url` into the file `path`, overwriting it (WinINet, with the system's proxy settings).
// Returns false if the address cannot be opened or the file cannot be written; a failed write leaves no
// file. A connection that breaks later leaves a partial file and counts as success, as does any HTTP
// status: callers check the content.
bool DownloadFile(const std::wstring& url, const std::wstring& path) {
  DeleteUrlCacheEntryW(url.c_str());
  InternetHandle session(
      InternetOpenW(UserAgent().c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
  if (!session) return false;
  DWORD flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_PRAGMA_NOCACHE;
  if (url.starts_with(L"https://")) flags |= INTERNET_FLAG_SECURE;
  InternetHandle source(InternetOpenUrlW(session.get(), url.c_str(), nullptr, 0, flags, 0));
  if (!source) return false;
  FileHandle file(
      CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return false;
  if (CopyToFile(source.get(), file.get())) return true;
  file.reset();
  source.reset();
  session.reset();
  DeleteFileW(path.c_str());
  return false;
}

}  // namespace

void checkForUpdates(int request_id) {
  const auto fail = [request_id](const char* error) {
    PostReply("checkForUpdates", request_id, false, {{"error", error}});
  };
  const std::wstring local_copy = TemporaryFile(L"varnel_version_online.json");
  DeleteFileW(local_copy.c_str());
  if (!DownloadFile(Utf8ToWide(std::string(kReleaseUrl) + "/version.json"), local_copy)) {
    fail("Download failed from update server");
  } else if (std::ifstream file(local_copy.c_str(), std::ios::binary); !file) {
    fail("Cannot read downloaded version file");
  } else {
    try {
      const std::string description{std::istreambuf_iterator<char>(file), {}};
      PostReply("checkForUpdates", request_id, true, DescribeUpdate(description));
    } catch (const std::exception&) {
      fail("Invalid version file");
    }
  }
  DeleteFileW(local_copy.c_str());
}

void downloadAndApplyUpdate(int request_id, const std::optional<std::string>& download_url) {
  const std::wstring url = Utf8ToWide(download_url.value_or(std::string(kReleaseUrl) + "/VarnelSetup.exe"));
  const std::wstring installer = DownloadedInstaller();
  DeleteFileW(installer.c_str());
  DeleteUrlCacheEntryW(url.c_str());
  if (!DownloadFile(url, installer) || GetFileAttributesW(installer.c_str()) == INVALID_FILE_ATTRIBUTES) {
    PostReply("downloadAndApplyUpdate", request_id, false,
              {{"error", "Failed to download update executable"}});
    return;
  }
  // While the user is asked for administrator rights, the file can be read but not written, renamed or
  // deleted.
  const FileHandle held(CreateFileW(installer.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  PostReply("downloadAndApplyUpdate", request_id, true);
  Sleep(500);
  // The shell may pass the start to an extension that needs COM. The process ends right after this, so
  // nothing is uninitialised.
  static_cast<void>(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
  StartElevated(installer, L"--update-restart", 0, SW_HIDE);
  ExitProcess(0);
}

void DeleteDownloadedInstaller() {
  const std::wstring installer = DownloadedInstaller();
  // The installer that started this program may still be shutting down.
  for (int tries = 0; tries < 30 && !DeleteFileW(installer.c_str()); ++tries) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND) return;
    Sleep(1000);
  }
}
