#include "system/hardware.h"

#include <windows.h>
#include <dxgi.h>
#include <sysinfoapi.h>
#include <wrl/client.h>

#include "base/handle_win.h"
#include "base/page.h"
#include "base/registry_win.h"
#include "base/text.h"

namespace {

using Microsoft::WRL::ComPtr;

bool IsElevated() {
  KernelHandle token;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put())) return false;
  TOKEN_ELEVATION elevation = {};
  DWORD size = 0;
  return GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &size) &&
         elevation.TokenIsElevated != 0;
}

std::wstring ReadPrimaryAdapterName() {
  DISPLAY_DEVICEW device = {};
  device.cb = sizeof(device);
  for (DWORD i = 0; EnumDisplayDevicesW(nullptr, i, &device, 0); ++i)
    if (device.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) return device.DeviceString;
  return L"Unknown GPU";
}

// Loads the library at its first use, because it brings in the whole graphics stack, which a silent
// clean never needs.
HRESULT CreateGraphicsFactory(IDXGIFactory** factory) {
  static const HMODULE library = LoadLibraryExW(L"dxgi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  const FARPROC address = library ? GetProcAddress(library, "CreateDXGIFactory") : nullptr;
  if (!address) return E_NOTIMPL;
  const auto create = reinterpret_cast<decltype(&CreateDXGIFactory)>(reinterpret_cast<void*>(address));
  return create(__uuidof(IDXGIFactory), reinterpret_cast<void**>(factory));
}

// Reads the first adapter, which need not drive the primary display.
std::optional<uint64_t> ReadDedicatedVideoMemory() {
  ComPtr<IDXGIFactory> factory;
  if (FAILED(CreateGraphicsFactory(&factory)) || !factory) return std::nullopt;
  ComPtr<IDXGIAdapter> adapter;
  if (FAILED(factory->EnumAdapters(0, &adapter)) || !adapter) return std::nullopt;
  DXGI_ADAPTER_DESC description = {};
  if (FAILED(adapter->GetDesc(&description))) return std::nullopt;
  return description.DedicatedVideoMemory;
}

MemoryModules ReadMemoryModules() {
  constexpr DWORD kRawSmbios = 0x52534D42;  // 'RSMB'
  const UINT size = GetSystemFirmwareTable(kRawSmbios, 0, nullptr, 0);
  if (size < 9) return {};
  std::string table(size, '\0');
  if (GetSystemFirmwareTable(kRawSmbios, 0, table.data(), size) != size) return {};
  return ParseMemoryModules(table);
}

void CollectMemory(HardwareSpecs& specs) {
  ULONGLONG installed_kb = 0;
  if (!GetPhysicallyInstalledSystemMemory(&installed_kb)) installed_kb = 0;
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof(status);
  const uint64_t visible_bytes = GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
  const int32_t total_gb = InstalledGigabytes(installed_kb, visible_bytes);
  specs.ram = FormatMemory(total_gb, ReadMemoryModules());
  specs.ram_tooltip = FormatMemoryTooltip(total_gb, installed_kb, visible_bytes);
}

}  // namespace

HardwareSpecs CollectHardwareSpecs() {
  constexpr const wchar_t* kProcessor = LR"(HARDWARE\DESCRIPTION\System\CentralProcessor\0)";
  constexpr const wchar_t* kBios = LR"(HARDWARE\DESCRIPTION\System\BIOS)";
  constexpr const wchar_t* kWindows = LR"(SOFTWARE\Microsoft\Windows NT\CurrentVersion)";
  auto read = [](const wchar_t* path, const wchar_t* value) {
    return ReadRegistryString(HKEY_LOCAL_MACHINE, path, value);
  };

  HardwareSpecs specs;
  specs.is_admin = IsElevated();
  specs.cpu = read(kProcessor, L"ProcessorNameString");
  const std::wstring adapter_name = ReadPrimaryAdapterName();
  specs.gpu = FormatGpu(adapter_name, ReadDedicatedVideoMemory());
  CollectMemory(specs);
  specs.motherboard = FormatBoard(read(kBios, L"BaseBoardManufacturer"), read(kBios, L"BaseBoardProduct"));
  specs.os = FormatOs(read(kWindows, L"ProductName"), read(kWindows, L"CurrentBuild"),
                      read(kWindows, L"DisplayVersion"));
  return specs;
}

void getCPU(int request_id) {
  PostReply("cpu_info", request_id, true, {{"cpu", WideToUtf8(CollectHardwareSpecs().cpu)}});
}
