#include "service/setup_win.h"

#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include <array>
#include <string>

#include "service/service_handle_win.h"
#include "service/topics_win.h"

namespace {

constexpr wchar_t kEventSource[] =
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\VarnelService";
constexpr wchar_t kOwnKey[] = L"SOFTWARE\\Varnel";
constexpr wchar_t kDescription[] =
    L"Does for Varnel what needs administrator rights: the hosts file, variables and start-up items of all users, "
    L"protected junk folders, development services, drivers and repairs. Varnel works without it, with fewer "
    L"functions.";
constexpr DWORD kStopMs = 30'000;
constexpr DWORD kStepMs = 100;
constexpr DWORD kEndMs = 5'000;

bool WaitUntilStopped(SC_HANDLE service) {
  SERVICE_STATUS status = {};
  for (DWORD waited_ms = 0; waited_ms < kStopMs; waited_ms += kStepMs) {
    if (!QueryServiceStatus(service, &status) || status.dwCurrentState == SERVICE_STOPPED) return true;
    Sleep(kStepMs);
  }
  return false;
}

// Returns null if the service is not running.
KernelHandle OpenProcessOf(SC_HANDLE service) {
  SERVICE_STATUS_PROCESS status = {};
  DWORD size_bytes = 0;
  const bool is_known = QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO,
                                             reinterpret_cast<BYTE*>(&status), sizeof(status), &size_bytes);
  return KernelHandle(
      is_known && status.dwProcessId != 0 ? OpenProcess(SYNCHRONIZE, FALSE, status.dwProcessId) : nullptr);
}

bool Stop(SC_HANDLE service) {
  const KernelHandle process = OpenProcessOf(service);
  SERVICE_STATUS status = {};
  if ((!ControlService(service, SERVICE_CONTROL_STOP, &status) &&
       GetLastError() != ERROR_SERVICE_NOT_ACTIVE) ||
      !WaitUntilStopped(service))
    return false;
  // The process, and with it the use of its file, ends only after its service.
  return !process || WaitForSingleObject(process.get(), kEndMs) == WAIT_OBJECT_0;
}

ServiceHandle OpenOwn(DWORD access) {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  return ServiceHandle(OpenServiceW(manager.get(), kServiceName, access));
}

// Updates the existing service's configuration, or creates the service.
ServiceHandle Register(const std::wstring& command) {
  constexpr DWORD kType = SERVICE_WIN32_OWN_PROCESS, kStart = SERVICE_AUTO_START,
                  kError = SERVICE_ERROR_NORMAL;
  constexpr wchar_t kTitle[] = L"Varnel Helper Service";
  const ServiceHandle manager(
      OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
  ServiceHandle service(OpenServiceW(manager.get(), kServiceName, SERVICE_ALL_ACCESS));
  if (!service)
    return ServiceHandle(CreateServiceW(manager.get(), kServiceName, kTitle, SERVICE_ALL_ACCESS, kType,
                                        kStart, kError, command.c_str(), nullptr, nullptr, nullptr, nullptr,
                                        nullptr));
  if (!ChangeServiceConfigW(service.get(), kType, kStart, kError, command.c_str(), nullptr, nullptr, nullptr,
                            L"LocalSystem", nullptr, kTitle))
    service.reset();
  return service;
}

void DescribeAndRestart(SC_HANDLE service) {
  std::wstring text = kDescription;
  SERVICE_DESCRIPTIONW description = {text.data()};
  ChangeServiceConfig2W(service, SERVICE_CONFIG_DESCRIPTION, &description);
  std::array<SC_ACTION, 3> actions = {
      {{SC_ACTION_RESTART, 5'000}, {SC_ACTION_RESTART, 60'000}, {SC_ACTION_NONE, 0}}};
  SERVICE_FAILURE_ACTIONSW recovery = {};
  recovery.dwResetPeriod = 24 * 60 * 60;
  recovery.cActions = static_cast<DWORD>(actions.size());
  recovery.lpsaActions = actions.data();
  ChangeServiceConfig2W(service, SERVICE_CONFIG_FAILURE_ACTIONS, &recovery);
}

bool RegisterEventSource() {
  constexpr wchar_t kMessages[] = L"%SystemRoot%\\System32\\EventCreate.exe";
  constexpr DWORD kTypes = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
  return RegSetKeyValueW(HKEY_LOCAL_MACHINE, kEventSource, L"EventMessageFile", REG_EXPAND_SZ, kMessages,
                         sizeof(kMessages)) == ERROR_SUCCESS &&
         RegSetKeyValueW(HKEY_LOCAL_MACHINE, kEventSource, L"TypesSupported", REG_DWORD, &kTypes,
                         sizeof(kTypes)) == ERROR_SUCCESS;
}

bool DeleteKey(const wchar_t* path) {
  const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, path);
  return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

// Returns true for the system, administrators and Windows' own installer, and for the current user, who
// is the system in the service.
bool IsTrusted(PSID sid) {
  static constexpr std::array kTrusted = {L"S-1-5-18", L"S-1-5-32-544",
                                          L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};
  for (const wchar_t* text : kTrusted) {
    PSID trusted = nullptr;
    if (!ConvertStringSidToSidW(text, &trusted)) return false;
    const bool is_same = EqualSid(sid, trusted);
    LocalFree(trusted);
    if (is_same) return true;
  }
  KernelHandle token;
  alignas(TOKEN_USER) BYTE user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size_bytes = 0;
  return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put()) &&
         GetTokenInformation(token.get(), TokenUser, user, sizeof(user), &size_bytes) &&
         EqualSid(sid, reinterpret_cast<TOKEN_USER*>(user)->User.Sid);
}

// Returns true if only trusted accounts have any of `rights` to the file or folder. Refuses a link,
// because the access list that would be read is not its own.
bool IsGuarded(const std::wstring& path, DWORD rights) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || attributes & FILE_ATTRIBUTE_REPARSE_POINT) return false;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  PSID owner = nullptr;
  PACL list = nullptr;
  if (GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT,
                            OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr, &list,
                            nullptr, &descriptor) != ERROR_SUCCESS)
    return false;
  bool is_guarded = list != nullptr && IsTrusted(owner);
  for (DWORD i = 0; is_guarded && i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (!GetAce(list, i, &entry)) break;
    const auto* allowed = static_cast<const ACCESS_ALLOWED_ACE*>(entry);
    if (allowed->Header.AceFlags & INHERIT_ONLY_ACE || allowed->Header.AceType == ACCESS_DENIED_ACE_TYPE)
      continue;
    DWORD mask = allowed->Mask;
    if (mask & (GENERIC_ALL | GENERIC_WRITE)) mask |= rights;
    // Treats an entry of an unknown kind as granting its rights to anyone.
    is_guarded = (mask & rights) == 0 || (allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
                                          IsTrusted(const_cast<DWORD*>(&allowed->SidStart)));
  }
  LocalFree(descriptor);
  return is_guarded;
}

}  // namespace

bool IsFolderSafe(const std::wstring& folder) {
  constexpr DWORD kTakeOver = DELETE | WRITE_DAC | WRITE_OWNER;
  for (const wchar_t* file : {L"", L"\\VarnelService.exe", L"\\Varnel.exe", L"\\update_driver.ps1"})
    if (!IsGuarded(folder + file, kTakeOver | FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD))
      return false;
  // Renaming a folder above would take over the path; new folders beside it do no harm.
  for (size_t end = folder.rfind(L'\\'); end != folder.npos && end >= 2; end = folder.rfind(L'\\', end - 1))
    if (!IsGuarded(folder.substr(0, end == 2 ? 3 : end), kTakeOver | FILE_DELETE_CHILD)) return false;
  return true;
}

bool InstallService(const std::wstring& folder) {
  if (!IsFolderSafe(folder)) return false;
  const ServiceHandle service = Register(L"\"" + folder + L"\\VarnelService.exe\"");
  if (!service) return false;
  DescribeAndRestart(service.get());
  return RegisterEventSource() &&
         (StartServiceW(service.get(), 0, nullptr) || GetLastError() == ERROR_SERVICE_ALREADY_RUNNING);
}

bool StopService() {
  const ServiceHandle service = OpenOwn(SERVICE_STOP | SERVICE_QUERY_STATUS);
  return !service || Stop(service.get());
}

bool RemoveService() {
  bool is_removed = true;
  if (const ServiceHandle service = OpenOwn(SERVICE_STOP | SERVICE_QUERY_STATUS | DELETE)) {
    is_removed = Stop(service.get());
    // One that keeps running goes as soon as it ends.
    is_removed &= DeleteService(service.get()) != FALSE;
  }
  is_removed &= UnscheduleCleaning();
  is_removed &= DeleteKey(kEventSource);
  is_removed &= DeleteKey(kOwnKey);
  return is_removed;
}
