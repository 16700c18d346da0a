#include "service/peer_win.h"

#include <windows.h>
#include <knownfolders.h>
#include <sddl.h>
#include <shlobj.h>
#include <userenv.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "base/exe_directory.h"
#include "base/path_names.h"

namespace {

// Ends the process if the thread cannot get its own rights back: it must not continue with the wrong
// ones.
void TakeOwnRightsBack() {
  if (!RevertToSelf()) TerminateProcess(GetCurrentProcess(), 1);
}

KernelHandle TokenOfClient(HANDLE pipe) {
  KernelHandle token;
  if (!ImpersonateNamedPipeClient(pipe)) return token;
  OpenThreadToken(GetCurrentThread(), TOKEN_QUERY | TOKEN_DUPLICATE | TOKEN_IMPERSONATE, TRUE, token.put());
  TakeOwnRightsBack();
  return token;
}

// Returns the result of GetTokenInformation, or an empty buffer on failure.
std::vector<std::byte> Ask(HANDLE token, TOKEN_INFORMATION_CLASS what) {
  DWORD size_bytes = 0;
  GetTokenInformation(token, what, nullptr, 0, &size_bytes);
  std::vector<std::byte> answer(size_bytes);
  if (size_bytes == 0 || !GetTokenInformation(token, what, answer.data(), size_bytes, &size_bytes)) return {};
  return answer;
}

// Returns true if the token may be used to act as its user, not only to identify him. Any program can
// obtain an identification token of any user, by waiting for a connection or requesting a logon without
// a password.
bool MayBeActedAs(HANDLE token) {
  SECURITY_IMPERSONATION_LEVEL level = SecurityAnonymous;
  DWORD size_bytes = 0;
  return GetTokenInformation(token, TokenImpersonationLevel, &level, sizeof(level), &size_bytes) &&
         level >= SecurityImpersonation;
}

// Returns true if Administrators is an enabled group of the token.
bool ActsAsAdministrator(HANDLE token) {
  KernelHandle asked;  // CheckTokenMembership refuses a primary token
  if (!DuplicateTokenEx(token, TOKEN_QUERY | TOKEN_IMPERSONATE, nullptr, SecurityIdentification,
                        TokenImpersonation, asked.put()))
    return false;
  std::byte administrators[SECURITY_MAX_SID_SIZE];
  DWORD size_bytes = sizeof(administrators);
  BOOL is_member = FALSE;
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size_bytes) &&
         CheckTokenMembership(asked.get(), administrators, &is_member) && is_member;
}

// Returns true if the user could act as an administrator after consenting.
bool CanElevate(HANDLE token) {
  TOKEN_ELEVATION_TYPE type = TokenElevationTypeDefault;
  DWORD size_bytes = 0;
  if (!GetTokenInformation(token, TokenElevationType, &type, sizeof(type), &size_bytes) ||
      type != TokenElevationTypeLimited)
    return false;
  TOKEN_LINKED_TOKEN linked = {};
  if (!GetTokenInformation(token, TokenLinkedToken, &linked, sizeof(linked), &size_bytes)) return false;
  return ActsAsAdministrator(KernelHandle(linked.LinkedToken).get());
}

bool IsConfined(HANDLE token) {
  const std::vector<std::byte> label = Ask(token, TokenIntegrityLevel);
  if (label.empty()) return true;
  const PSID sid = reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(label.data())->Label.Sid;
  const DWORD level = *GetSidSubAuthority(sid, *GetSidSubAuthorityCount(sid) - 1u);
  DWORD is_app_container = 0, size_bytes = 0;
  GetTokenInformation(token, TokenIsAppContainer, &is_app_container, sizeof(is_app_container), &size_bytes);
  return level < SECURITY_MANDATORY_MEDIUM_RID || is_app_container != 0 || IsTokenRestricted(token);
}

std::wstring UserOf(HANDLE token) {
  const std::vector<std::byte> answer = Ask(token, TokenUser);
  if (answer.empty()) return L"unknown";
  const PSID sid = reinterpret_cast<const TOKEN_USER*>(answer.data())->User.Sid;
  wchar_t name[256], domain[256];
  DWORD name_units = 256, domain_units = 256;
  SID_NAME_USE use;
  if (LookupAccountSidW(nullptr, sid, name, &name_units, domain, &domain_units, &use))
    return std::wstring(domain) + L"\\" + name;
  wchar_t* text = nullptr;
  if (!ConvertSidToStringSidW(sid, &text)) return L"unknown";
  const std::wstring user = text;
  LocalFree(text);
  return user;
}

// Returns the volume and number of a file, which all of its names share.
std::optional<std::pair<DWORD, uint64_t>> IdentityOf(const std::wstring& path) {
  const FileHandle file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION information = {};
  if (!file || !GetFileInformationByHandle(file.get(), &information)) return std::nullopt;
  return std::pair(information.dwVolumeSerialNumber,
                   uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow);
}

std::wstring ImageOf(HANDLE process) {
  std::wstring image(32'768, L'\0');
  auto units = static_cast<DWORD>(image.size());
  image.resize(QueryFullProcessImageNameW(process, 0, image.data(), &units) ? units : 0);
  return image;
}

// Returns true for the service's own Varnel.exe. Does not even open a network path: that would send this
// machine's name and password hash to the path's server.
bool IsOwnProgram(const std::wstring& image) {
  if (image.size() < 3 || image.substr(1, 2) != L":\\") return false;
  const auto own = IdentityOf(GetExeDirectory() + L"\\Varnel.exe");
  return own && IdentityOf(image) == own;
}

// Returns an empty text if the folder cannot be found.
std::wstring KnownFolder(const KNOWNFOLDERID& id, HANDLE token) {
  TaskMemoryString path;
  return SUCCEEDED(SHGetKnownFolderPath(id, KF_FLAG_DONT_VERIFY, token, path.put())) ? path.get() : L"";
}

// Returns a variable of an environment block, or an empty text if the block does not have it.
std::wstring FromBlock(const wchar_t* block, std::wstring_view name) {
  for (std::wstring_view line = block; !line.empty(); line = block) {
    block += line.size() + 1;
    if (line.size() > name.size() && line[name.size()] == L'=' &&
        IsSamePath(line.substr(0, name.size()), name))
      return std::wstring(line.substr(name.size() + 1));
  }
  return {};
}

}  // namespace

Peer IdentifyPeer(HANDLE pipe) {
  Peer peer;
  peer.user = L"unknown";
  peer.image = L"unknown";
  ULONG pid = 0;
  if (GetNamedPipeClientProcessId(pipe, &pid))
    peer.process.reset(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, pid));
  if (peer.process) {
    peer.image = ImageOf(peer.process.get());
    peer.facts.is_own_program = IsOwnProgram(peer.image);
  }
  peer.token = TokenOfClient(pipe);
  if (!peer.token) return peer;
  peer.user = UserOf(peer.token.get());
  if (!MayBeActedAs(peer.token.get())) return peer;
  peer.facts.is_elevated = ActsAsAdministrator(peer.token.get());
  peer.facts.is_administrator = peer.facts.is_elevated || CanElevate(peer.token.get());
  peer.facts.is_confined = IsConfined(peer.token.get());
  return peer;
}

ActingAs::ActingAs(const Peer& peer)
    : is_acting_(peer.token && MayBeActedAs(peer.token.get()) && SetThreadToken(nullptr, peer.token.get())) {}

ActingAs::~ActingAs() {
  TakeOwnRightsBack();
}

PeerFolders FindPeerFolders(const Peer& peer) {
  PeerFolders folders;
  folders.local_app_data = KnownFolder(FOLDERID_LocalAppData, peer.token.get());

  void* block = nullptr;
  if (!CreateEnvironmentBlock(&block, peer.token.get(), FALSE)) return folders;
  const auto variable = [&](const wchar_t* name) {
    return FromBlock(static_cast<const wchar_t*>(block), name);
  };
  std::wstring temporary = variable(L"TMP");
  if (temporary.empty()) temporary = variable(L"TEMP");
  KeptFolders kept;
  wchar_t windows[MAX_PATH] = {};
  GetWindowsDirectoryW(windows, MAX_PATH);
  kept.windows = windows;
  // The user can change USERPROFILE, but not the known folder.
  kept.others = {GetExeDirectory(), KnownFolder(FOLDERID_Profile, peer.token.get()),
                 variable(L"USERPROFILE")};
  DestroyEnvironmentBlock(block);
  if (std::ranges::any_of(kept.others, &std::wstring::empty)) return folders;
  {
    // Expands short names, which would not be recognised.
    const ActingAs acting(peer);
    if (!acting) return folders;
    temporary = LongPath(temporary);
    for (std::wstring& path : kept.others) path = LongPath(path);
  }
  if (IsTemporaryFolder(temporary, kept, IsSamePath)) folders.temporary = temporary;
  return folders;
}
