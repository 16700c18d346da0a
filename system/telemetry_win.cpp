#include "system/telemetry.h"

#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>

#include "base/byte_units.h"
#include "base/file_time_win.h"
#include "base/page.h"

namespace {

// Never reset; see SampleTelemetry.
CpuTimes g_previous_cpu;
NetworkCounters g_previous_network;

double SampleCpuLoad() {
  FILETIME idle = {}, kernel = {}, user = {};
  if (!GetSystemTimes(&idle, &kernel, &user)) return 0;
  const CpuTimes now = {Ticks(idle), Ticks(kernel), Ticks(user)};
  const double load = CpuLoadPercent(g_previous_cpu, now);
  g_previous_cpu = now;
  return load;
}

void SampleMemory(TelemetrySample& sample) {
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof(status);
  if (!GlobalMemoryStatusEx(&status)) return;
  sample.ram_load = status.dwMemoryLoad;
  sample.ram_total_gb = static_cast<double>(status.ullTotalPhys) / kBytesPerGigabyte;
  sample.ram_used_gb = static_cast<double>(status.ullTotalPhys - status.ullAvailPhys) / kBytesPerGigabyte;
}

std::vector<DiskUsage> SampleDisks() {
  std::vector<DiskUsage> disks;
  constexpr DWORD kUnits = 256;
  wchar_t roots[kUnits] = {};
  const DWORD length = GetLogicalDriveStringsW(kUnits, roots);
  if (length < 1 || length >= kUnits) return disks;
  for (const wchar_t* next = roots; *next != L'\0';) {
    const std::wstring root = next;
    next += root.size() + 1;
    ULARGE_INTEGER total = {}, free = {};
    if (GetDriveTypeW(root.c_str()) != DRIVE_FIXED ||
        !GetDiskFreeSpaceExW(root.c_str(), nullptr, &total, &free))
      continue;
    const std::wstring drive = root.ends_with(L'\\') ? root.substr(0, root.size() - 1) : root;
    disks.push_back({drive, total.QuadPart, free.QuadPart, total.QuadPart - free.QuadPart});
  }
  return disks;
}

// Returns the rows of GetIfTable, or none if the table cannot be read.
std::vector<InterfaceOctets> ReadInterfaces() {
  std::vector<InterfaceOctets> interfaces;
  ULONG size = 0;
  if (GetIfTable(nullptr, &size, FALSE) != ERROR_INSUFFICIENT_BUFFER) return interfaces;
  std::vector<BYTE> buffer(size);
  const auto* table = reinterpret_cast<const MIB_IFTABLE*>(buffer.data());
  if (GetIfTable(reinterpret_cast<MIB_IFTABLE*>(buffer.data()), &size, FALSE) != NO_ERROR) return interfaces;
  for (DWORD i = 0; i < table->dwNumEntries; ++i) {
    const MIB_IFROW& row = table->table[i];
    interfaces.push_back({row.dwType, row.dwInOctets, row.dwOutOctets});
  }
  return interfaces;
}

NetworkRates SampleNetworkRates() {
  const uint64_t time_ms = GetTickCount64();
  NetworkCounters now = SumOctets(ReadInterfaces());
  now.time_ms = time_ms;
  const NetworkRates rates = RatesBetween(g_previous_network, now);
  g_previous_network = now;
  return rates;
}

// Older headers call the battery saver byte Reserved1.
template <typename PowerStatus>
BYTE SystemStatusFlag(const PowerStatus& status) {
  if constexpr (requires { status.SystemStatusFlag; })
    return status.SystemStatusFlag;
  else
    return status.Reserved1;
}

Battery SampleBattery() {
  SYSTEM_POWER_STATUS status = {};
  if (!GetSystemPowerStatus(&status)) return {};
  return DescribeBattery(status.BatteryFlag, status.BatteryLifePercent, status.BatteryLifeTime,
                         SystemStatusFlag(status));
}

// Returns the friendly name of the first adapter that is up and is neither a loopback nor a tunnel.
std::wstring FindActiveAdapterName() {
  constexpr const wchar_t* kNone = L"No Active Adapter";
  constexpr ULONG kFlags =
      GAA_FLAG_SKIP_UNICAST | GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
  ULONG size = 0;
  if (GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr, nullptr, &size) != ERROR_BUFFER_OVERFLOW) return kNone;
  std::vector<BYTE> buffer(size);
  auto* adapter = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  if (GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr, adapter, &size) != NO_ERROR) return kNone;
  for (; adapter != nullptr; adapter = adapter->Next)
    if (IsActiveAdapter(static_cast<uint32_t>(adapter->OperStatus), adapter->IfType))
      return adapter->FriendlyName;
  return kNone;
}

}  // namespace

TelemetrySample SampleTelemetry() {
  TelemetrySample sample;
  sample.cpu = SampleCpuLoad();
  SampleMemory(sample);
  sample.disks = SampleDisks();
  const NetworkRates rates = SampleNetworkRates();
  sample.download = rates.download;
  sample.upload = rates.upload;
  sample.network_adapter = FindActiveAdapterName();
  sample.battery = SampleBattery();
  sample.cpu_temp = EstimateCpuTemperature(sample.cpu);
  sample.gpu_temp = EstimateGpuTemperature(sample.cpu);
  return sample;
}

void getTelemetry(int request_id) {
  PostReply("telemetry", request_id, true, ToJson(SampleTelemetry()));
}
