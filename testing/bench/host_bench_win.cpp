// Measures the host against the bare calls that it is made of: the road of a request, a telemetry sample, the
// hardware facts, the start of the program. host_bench [rounds]
#include <winsock2.h>
#include <windows.h>
#include <dxgi.h>
#include <iphlpapi.h>
#include <wrl/client.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "app/actions_win.h"
#include "app/main_window_win.h"
#include "base/exe_directory_win.h"
#include "base/handle_win.h"
#include "system/hardware_win.h"
#include "system/telemetry_win.h"
#include "testing/bench/measure.h"
#include "testing/fake_browser_win.h"
#include "testing/temp_folder_win.h"

namespace {

using Microsoft::WRL::ComPtr;

constexpr int kCallsPerRound = 200;

template <typename Work>
double RoundOf(int calls, Work work) {
  return Milliseconds([&] {
           for (int i = 0; i < calls; ++i) work();
         }) /
         calls;
}

int g_bare_messages = 0;

LRESULT CALLBACK BareProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != WM_POST_JSON) return DefWindowProcW(window, message, wparam, lparam);
  ++g_bare_messages;
  return 0;
}

HWND MakeBareWindow() {
  WNDCLASSW window_class = {};
  window_class.lpfnWndProc = BareProc;
  window_class.lpszClassName = L"VarnelBench";
  RegisterClassW(&window_class);
  return CreateWindowW(L"VarnelBench", L"", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr, nullptr,
                       nullptr);
}

template <typename Arrived>
void PumpUntil(Arrived arrived) {
  for (MSG message; !arrived() && GetMessageA(&message, nullptr, 0, 0) != 0;) DispatchMessageA(&message);
}

void MeasureDispatch(int rounds) {
  FakeView view;
  CreateMainWindow(GetModuleHandleW(nullptr), SW_HIDE);
  State().view = &view;
  const HWND bare_window = MakeBareWindow();
  const ActionDispatcher dispatcher(Actions());
  Compare(
      "testBridge, dispatch to delivery", 1.5, rounds,
      [&] {
        view.posted.clear();
        return RoundOf(kCallsPerRound, [&] {
          const size_t before = view.posted.size();
          dispatcher.Dispatch(LR"({"action":"testBridge","requestId":7,"data":{}})");
          PumpUntil([&] { return view.posted.size() > before; });
        });
      },
      [&] {
        return RoundOf(kCallsPerRound, [&] {
          const int before = g_bare_messages;
          PostMessageW(bare_window, WM_POST_JSON, 0, 0);
          PumpUntil([&] { return g_bare_messages > before; });
        });
      });
  State().view.Reset();
  const double debug_lines = RoundOf(kCallsPerRound, [] {
    OutputDebugStringW(L"[Varnel Debug] PostJsonToJs: calling PostMessageW...\n");
    OutputDebugStringW(L"[Varnel Debug] PostMessageW queued successfully.\n");
  });
  std::printf("  of which its two debugger lines: %.3f ms\n", debug_lines);
}

void BareTelemetry() {
  FILETIME idle, kernel, user;
  GetSystemTimes(&idle, &kernel, &user);
  MEMORYSTATUSEX memory = {};
  memory.dwLength = sizeof(memory);
  GlobalMemoryStatusEx(&memory);
  wchar_t roots[256] = {};
  GetLogicalDriveStringsW(256, roots);
  for (const wchar_t* root = roots; *root; root += wcslen(root) + 1) {
    ULARGE_INTEGER total, free;
    if (GetDriveTypeW(root) == DRIVE_FIXED) GetDiskFreeSpaceExW(root, nullptr, &total, &free);
  }
  ULONG size = 0;
  GetIfTable(nullptr, &size, FALSE);
  std::vector<BYTE> table(size);
  GetIfTable(reinterpret_cast<MIB_IFTABLE*>(table.data()), &size, FALSE);
  constexpr ULONG flags = 15;
  size = 0;
  GetAdaptersAddresses(AF_UNSPEC, flags, nullptr, nullptr, &size);
  std::vector<BYTE> adapters(size);
  GetAdaptersAddresses(AF_UNSPEC, flags, nullptr, reinterpret_cast<IP_ADAPTER_ADDRESSES*>(adapters.data()),
                       &size);
  SYSTEM_POWER_STATUS power;
  GetSystemPowerStatus(&power);
}

void BareSpecs() {
  KernelHandle token;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put());
  TOKEN_ELEVATION elevation;
  DWORD size = 0;
  GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &size);
  constexpr const wchar_t* values[][2] = {
      {L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", L"ProcessorNameString"},
      {L"HARDWARE\\DESCRIPTION\\System\\BIOS", L"BaseBoardManufacturer"},
      {L"HARDWARE\\DESCRIPTION\\System\\BIOS", L"BaseBoardProduct"},
      {L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", L"ProductName"},
      {L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", L"CurrentBuild"},
      {L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", L"DisplayVersion"}};
  for (const auto& [path, name] : values) {
    RegistryKey key;
    BYTE data[1024];
    DWORD length = sizeof(data);
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, key.put()) == ERROR_SUCCESS)
      RegQueryValueExW(key.get(), name, nullptr, nullptr, data, &length);
  }
  DISPLAY_DEVICEW device = {};
  device.cb = sizeof(device);
  for (DWORD i = 0; EnumDisplayDevicesW(nullptr, i, &device, 0); ++i)
    if (device.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) break;
  ComPtr<IDXGIFactory> factory;
  ComPtr<IDXGIAdapter> adapter;
  DXGI_ADAPTER_DESC description;
  if (SUCCEEDED(CreateDXGIFactory(IID_PPV_ARGS(&factory))) && SUCCEEDED(factory->EnumAdapters(0, &adapter)))
    adapter->GetDesc(&description);
  ULONGLONG installed_kb;
  GetPhysicallyInstalledSystemMemory(&installed_kb);
  MEMORYSTATUSEX memory = {};
  memory.dwLength = sizeof(memory);
  GlobalMemoryStatusEx(&memory);
  constexpr DWORD raw_smbios = 0x52534D42;
  std::vector<BYTE> firmware(GetSystemFirmwareTable(raw_smbios, 0, nullptr, 0));
  GetSystemFirmwareTable(raw_smbios, 0, firmware.data(), static_cast<DWORD>(firmware.size()));
}

// Runs a program until it ends and returns its exit code.
DWORD RunToEnd(const std::wstring& path) {
  std::wstring command = L"\"" + path + L"\"";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &started))
    return 0;
  const KernelHandle process(started.hProcess), thread(started.hThread);
  WaitForSingleObject(process.get(), INFINITE);
  DWORD exit_code = 0;
  GetExitCodeProcess(process.get(), &exit_code);
  return exit_code;
}

// The program with a loader that ends it when it is called, against a program that shows an empty window and
// ends. Both exit with their peak memory in kilobytes.
void MeasureStart(int rounds) {
  const std::wstring source = GetExeDirectory();
  const TempFolder folder;
  const std::wstring program = folder.path + L"\\Varnel.exe", empty = source + L"\\empty_window.exe";
  if (!CopyFileW((source + L"\\Varnel.exe").c_str(), program.c_str(), FALSE) ||
      !CopyFileW((source + L"\\ending_loader.dll").c_str(), (folder.path + L"\\WebView2Loader.dll").c_str(),
                 FALSE)) {
    std::puts("start: FAILED, Varnel.exe or ending_loader.dll is not here");
    return;
  }
  DWORD our_peak_kb = 0, bare_peak_kb = 0;
  Compare(
      "program start to loader call", 1.3, rounds,
      [&] { return Milliseconds([&] { our_peak_kb = RunToEnd(program); }); },
      [&] { return Milliseconds([&] { bare_peak_kb = RunToEnd(empty); }); });
  std::printf("peak memory at the loader call: ours %lu kB, empty window %lu kB\n", our_peak_kb,
              bare_peak_kb);
}

}  // namespace

int main(int count, char** arguments) {
  const int rounds = count > 1 ? std::atoi(arguments[1]) : 15;
  MeasureDispatch(rounds);
  Compare(
      "telemetry sample", 1.2, rounds, [] { return RoundOf(20, [] { SampleTelemetry(); }); },
      [] { return RoundOf(20, BareTelemetry); });
  Compare(
      "hardware facts", 1.2, rounds, [] { return RoundOf(5, [] { CollectHardwareSpecs(); }); },
      [] { return RoundOf(5, BareSpecs); });
  MeasureStart(rounds);
}
