#include <windows.h>

#include <cstddef>
#include <functional>

#include "base/text.h"
#include "service/service_handle_win.h"
#include "service/topics_win.h"

namespace {

constexpr ULONGLONG kWaitMs = 30'000;
constexpr DWORD kStepMs = 100;

ServiceHandle OpenManager(DWORD access) {
  return ServiceHandle(OpenSCManagerW(nullptr, nullptr, access));
}

// Calls the system's function until its buffer is large enough. Returns an empty buffer on failure.
std::vector<std::byte> Fill(const std::function<BOOL(BYTE* buffer, DWORD size_bytes, DWORD* needed)>& ask) {
  DWORD needed = 0;
  if (ask(nullptr, 0, &needed) || needed == 0) return {};
  std::vector<std::byte> buffer(needed);
  if (!ask(reinterpret_cast<BYTE*>(buffer.data()), needed, &needed)) return {};
  return buffer;
}

DWORD StateOf(SC_HANDLE service) {
  SERVICE_STATUS_PROCESS status = {};
  DWORD needed = 0;
  QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status), sizeof(status),
                       &needed);
  return status.dwCurrentState;
}

bool WaitForState(SC_HANDLE service, DWORD state) {
  for (const ULONGLONG end = GetTickCount64() + kWaitMs; StateOf(service) != state; Sleep(kStepMs))
    if (GetTickCount64() > end) return false;
  return true;
}

bool Start(SC_HANDLE service) {
  return (StartServiceW(service, 0, nullptr) || GetLastError() == ERROR_SERVICE_ALREADY_RUNNING) &&
         WaitForState(service, SERVICE_RUNNING);
}

// Stops the service after everything that depends on it, and adds each to `stopped` in that order.
bool Stop(SC_HANDLE manager, SC_HANDLE service, std::vector<std::wstring>& stopped) {
  DWORD count = 0;
  const std::vector<std::byte> list = Fill([&](BYTE* buffer, DWORD size_bytes, DWORD* needed) {
    return EnumDependentServicesW(service, SERVICE_ACTIVE, reinterpret_cast<ENUM_SERVICE_STATUSW*>(buffer),
                                  size_bytes, needed, &count);
  });
  // The system lists all dependents, even indirect ones, in the order in which they can be stopped.
  const auto* dependents = reinterpret_cast<const ENUM_SERVICE_STATUSW*>(list.data());
  for (DWORD i = 0; !list.empty() && i < count; ++i) {
    const std::wstring name = dependents[i].lpServiceName;
    const ServiceHandle dependent(OpenServiceW(
        manager, name.c_str(), SERVICE_STOP | SERVICE_QUERY_STATUS | SERVICE_ENUMERATE_DEPENDENTS));
    SERVICE_STATUS status = {};
    if (!dependent) return false;
    if (!ControlService(dependent.get(), SERVICE_CONTROL_STOP, &status) &&
        GetLastError() != ERROR_SERVICE_NOT_ACTIVE)
      return false;
    if (!WaitForState(dependent.get(), SERVICE_STOPPED)) return false;
    stopped.push_back(name);
  }
  SERVICE_STATUS status = {};
  return (ControlService(service, SERVICE_CONTROL_STOP, &status) ||
          GetLastError() == ERROR_SERVICE_NOT_ACTIVE) &&
         WaitForState(service, SERVICE_STOPPED);
}

void StartAgain(SC_HANDLE manager, const std::vector<std::wstring>& names) {
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    const ServiceHandle service(OpenServiceW(manager, name->c_str(), SERVICE_START | SERVICE_QUERY_STATUS));
    if (service) Start(service.get());
  }
}

nlohmann::json Describe(SC_HANDLE manager, const ENUM_SERVICE_STATUS_PROCESSW& listed) {
  ServiceState state = {listed.ServiceStatusProcess.dwCurrentState, 0,
                        (listed.ServiceStatusProcess.dwControlsAccepted & SERVICE_ACCEPT_STOP) != 0, false};
  const ServiceHandle service(OpenServiceW(manager, listed.lpServiceName, SERVICE_QUERY_CONFIG));
  const std::vector<std::byte> config = Fill([&](BYTE* buffer, DWORD size_bytes, DWORD* needed) {
    return QueryServiceConfigW(service.get(), reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer), size_bytes,
                               needed);
  });
  if (!config.empty())
    state.start_type = reinterpret_cast<const QUERY_SERVICE_CONFIGW*>(config.data())->dwStartType;
  SERVICE_DELAYED_AUTO_START_INFO delayed = {};
  DWORD needed = 0;
  if (QueryServiceConfig2W(service.get(), SERVICE_CONFIG_DELAYED_AUTO_START_INFO,
                           reinterpret_cast<BYTE*>(&delayed), sizeof(delayed), &needed))
    state.is_delayed = delayed.fDelayedAutostart;
  return {{"service_type", WideToUtf8(listed.lpServiceName)},
          {"display_name", WideToUtf8(listed.lpDisplayName)},
          {"status", StateWord(state.state)},
          {"start", config.empty() ? "unknown" : StartWord(state)},
          {"commands", PossibleCommands(state)}};
}

}  // namespace

nlohmann::json ListDevServices() {
  nlohmann::json services = nlohmann::json::array();
  const ServiceHandle manager = OpenManager(SC_MANAGER_CONNECT | SC_MANAGER_ENUMERATE_SERVICE);
  DWORD count = 0;
  const std::vector<std::byte> list = Fill([&](BYTE* buffer, DWORD size_bytes, DWORD* needed) {
    DWORD resume = 0;
    return EnumServicesStatusExW(manager.get(), SC_ENUM_PROCESS_INFO, SERVICE_WIN32, SERVICE_STATE_ALL,
                                 buffer, size_bytes, needed, &count, &resume, nullptr);
  });
  const auto* listed = reinterpret_cast<const ENUM_SERVICE_STATUS_PROCESSW*>(list.data());
  for (DWORD i = 0; !list.empty() && i < count; ++i)
    if (IsDevService(listed[i].lpServiceName)) services.push_back(Describe(manager.get(), listed[i]));
  return services;
}

bool ControlDevService(const std::wstring& name, ServiceCommand command) {
  const ServiceHandle manager = OpenManager(SC_MANAGER_CONNECT);
  const ServiceHandle service(
      OpenServiceW(manager.get(), name.c_str(),
                   SERVICE_START | SERVICE_STOP | SERVICE_QUERY_STATUS | SERVICE_ENUMERATE_DEPENDENTS));
  if (!service) return false;
  if (command == ServiceCommand::kStart) return Start(service.get());
  std::vector<std::wstring> stopped;
  const bool is_stopped = Stop(manager.get(), service.get(), stopped);
  if (command == ServiceCommand::kStop) return is_stopped;
  const bool is_restarted = is_stopped && Start(service.get());
  StartAgain(manager.get(), stopped);
  return is_restarted;
}
