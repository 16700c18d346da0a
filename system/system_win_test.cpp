// winsock2.h must come before windows.h.
#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>
#include <shlobj.h>

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "system/hardware_win.h"
#include "system/status_win.h"
#include "system/telemetry_win.h"
#include "testing/handle_count_win.h"
#include "testing/recording_page.h"
#include "testing/registry_sandbox_win.h"
#include "testing/stand_ins/pipe_server_win.h"

namespace {

using nlohmann::json;

// Octets of all interfaces but the loopback.
std::pair<uint64_t, uint64_t> CountOctets() {
  std::vector<BYTE> buffer(1 << 20);
  auto* table = reinterpret_cast<MIB_IFTABLE*>(buffer.data());
  ULONG size = static_cast<ULONG>(buffer.size());
  EXPECT_EQ(GetIfTable(table, &size, FALSE), static_cast<DWORD>(NO_ERROR));
  uint64_t received = 0, sent = 0;
  for (DWORD i = 0; i < table->dwNumEntries; ++i) {
    if (table->table[i].dwType == 24) continue;
    received += table->table[i].dwInOctets;
    sent += table->table[i].dwOutOctets;
  }
  return {received, sent};
}

// Datagrams to a port of this machine that nobody listens on.
void SendOverLoopback(int kilobytes) {
  WSADATA data = {};
  ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  const SOCKET socket_handle = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(9);
  const std::string kilobyte(1024, 'x');
  // A send fails when the refusal of an earlier one has come back; most go out.
  for (int i = 0; i < kilobytes; ++i)
    sendto(socket_handle, kilobyte.data(), 1024, 0, reinterpret_cast<const sockaddr*>(&address),
           sizeof(address));
  closesocket(socket_handle);
  WSACleanup();
}

// Friendly name of the first adapter that is up and is neither loopback nor tunnel.
std::wstring FirstActiveAdapter() {
  std::vector<BYTE> buffer(1 << 20);
  auto* adapter = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  ULONG size = static_cast<ULONG>(buffer.size());
  EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, adapter, &size), static_cast<ULONG>(NO_ERROR));
  for (; adapter != nullptr; adapter = adapter->Next)
    if (adapter->OperStatus == IfOperStatusUp && adapter->IfType != 24 && adapter->IfType != 131)
      return adapter->FriendlyName;
  return L"No Active Adapter";
}

void BurnProcessorTime(DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  volatile unsigned work = 0;
  while (GetTickCount64() < end) work = work + 1;
}

}  // namespace

TEST(CollectHardwareSpecs, ReadsTheRegistry) {
  CollectHardwareSpecs();  // graphics drivers are loaded with the real registry
  const RegistrySandbox registry;
  const HardwareSpecs missing = CollectHardwareSpecs();
  EXPECT_EQ(missing.cpu, L"Unknown");
  EXPECT_EQ(missing.motherboard, L"Unknown");
  EXPECT_EQ(missing.os, L"Unknown");

  SetRegistryData(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0",
                  L"ProcessorNameString", RegistryText(L"   Peat(R) Core  i7-0000  "));
  SetRegistryData(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\BIOS", L"BaseBoardManufacturer",
                  RegistryText(L"Gigabyte Technology Co., Ltd."));
  SetRegistryData(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\BIOS", L"BaseBoardProduct",
                  RegistryText(L"B650 PEAT"));
  const wchar_t* windows = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
  SetRegistryData(HKEY_LOCAL_MACHINE, windows, L"ProductName", RegistryText(L"Windows 10 Pro"));
  SetRegistryData(HKEY_LOCAL_MACHINE, windows, L"CurrentBuild", RegistryText(L"22631"));
  SetRegistryData(HKEY_LOCAL_MACHINE, windows, L"DisplayVersion", RegistryText(L"23H2"));
  const HardwareSpecs specs = CollectHardwareSpecs();
  EXPECT_EQ(specs.cpu, L"   Peat(R) Core  i7-0000  ") << "as stored, not trimmed";
  EXPECT_EQ(specs.motherboard, L"Gigabyte B650 PEAT");
  EXPECT_EQ(specs.os, L"Windows 11 Pro (Version 23H2)");
}

TEST(CollectHardwareSpecs, TellsThisMachine) {
  const HardwareSpecs specs = CollectHardwareSpecs();
  EXPECT_EQ(specs.is_admin, IsUserAnAdmin() != FALSE);

  ULONGLONG installed_kb = 0;
  GetPhysicallyInstalledSystemMemory(&installed_kb);
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof(status);
  ASSERT_TRUE(GlobalMemoryStatusEx(&status));
  const int32_t total_gb = InstalledGigabytes(installed_kb, status.ullTotalPhys);
  EXPECT_EQ(specs.ram.find(std::to_wstring(total_gb) + L" GB"), 0u) << std::to_string(total_gb);
  EXPECT_EQ(specs.ram_tooltip, FormatMemoryTooltip(total_gb, installed_kb, status.ullTotalPhys));

  DISPLAY_DEVICEW device = {};
  device.cb = sizeof(device);
  std::wstring adapter = L"Unknown GPU";
  for (DWORD i = 0; adapter == L"Unknown GPU" && EnumDisplayDevicesW(nullptr, i, &device, 0); ++i)
    if (device.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) adapter = device.DeviceString;
  EXPECT_EQ(specs.gpu.find(adapter), 0u);
  const std::wstring rest = specs.gpu.substr(adapter.size());
  EXPECT_TRUE(rest.empty() || (rest.starts_with(L" (") && rest.ends_with(L" GB VRAM)")));
}

TEST(Status, AnswersWithTheServicesState) {
  TakePostedTexts();
  getStatus(5);
  const StandInService service({});
  getStatus(6);
  PushStatus();
  const std::vector<json> posted = TakePostedMessages();
  ASSERT_EQ(posted.size(), 3u);
  EXPECT_EQ(posted[0]["requestId"], 5);
  EXPECT_EQ(posted[0]["serviceActive"], false);
  EXPECT_EQ(posted[1]["requestId"], 6);
  EXPECT_EQ(posted[1]["serviceActive"], true);
  EXPECT_EQ(posted[2]["requestId"], 0);
  EXPECT_EQ(posted[2]["specs"], posted[1]["specs"]);
}

TEST(SampleTelemetry, MeasuresLoadBetweenCalls) {
  auto read = [] {
    FILETIME times[3] = {};
    GetSystemTimes(&times[0], &times[1], &times[2]);
    auto ticks = [](const FILETIME& t) {
      return static_cast<uint64_t>(t.dwHighDateTime) << 32 | t.dwLowDateTime;
    };
    return CpuTimes{ticks(times[0]), ticks(times[1]), ticks(times[2])};
  };
  SampleTelemetry();
  const CpuTimes before = read();
  BurnProcessorTime(1000);
  const CpuTimes after = read();
  const TelemetrySample sample = SampleTelemetry();
  EXPECT_GT(sample.cpu, 5) << "one processor was busy";
  EXPECT_NEAR(sample.cpu, CpuLoadPercent(before, after), 10);
  EXPECT_DOUBLE_EQ(sample.cpu_temp, EstimateCpuTemperature(sample.cpu));
  EXPECT_DOUBLE_EQ(sample.gpu_temp, EstimateGpuTemperature(sample.cpu));
}

// Where nothing else is sent meanwhile, this shows that the loopback's traffic is left out.
TEST(SampleTelemetry, MeasuresRatesBetweenCalls) {
  const auto [received_before, sent_before] = CountOctets();
  SampleTelemetry();
  const auto [received_low, sent_low] = CountOctets();
  SendOverLoopback(5000);
  Sleep(500);
  const auto [received_high, sent_high] = CountOctets();
  const TelemetrySample sample = SampleTelemetry();
  const auto [received_after, sent_after] = CountOctets();
  // The sample's own readings lie between the ones around them; its time is 500 ms or more. 5 MB in that
  // time would be tens of megabits.
  const double unit = 8.0 / 1'048'576.0 / 0.5;
  EXPECT_LE(sample.download, static_cast<double>(received_after - received_before) * unit * 1.05);
  EXPECT_GE(sample.download * 4, static_cast<double>(received_high - received_low) * unit);
  EXPECT_LE(sample.upload, static_cast<double>(sent_after - sent_before) * unit * 1.05);
  EXPECT_GE(sample.upload * 4, static_cast<double>(sent_high - sent_low) * unit);
}

TEST(SampleTelemetry, AgreesWithTheSystem) {
  const TelemetrySample sample = SampleTelemetry();
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof(status);
  ASSERT_TRUE(GlobalMemoryStatusEx(&status));
  EXPECT_NEAR(sample.ram_load, status.dwMemoryLoad, 5);
  EXPECT_DOUBLE_EQ(sample.ram_total_gb * 1'073'741'824, static_cast<double>(status.ullTotalPhys));
  EXPECT_NEAR(sample.ram_used_gb * 1'073'741'824,
              static_cast<double>(status.ullTotalPhys - status.ullAvailPhys), 1e9);

  SYSTEM_POWER_STATUS power = {};
  ASSERT_TRUE(GetSystemPowerStatus(&power));
  EXPECT_EQ(sample.battery.percent, power.BatteryLifePercent);
  EXPECT_EQ(sample.battery.life_time_s, static_cast<int32_t>(power.BatteryLifeTime));
  EXPECT_TRUE(power.BatteryFlag != 128 || !sample.battery.present);
  EXPECT_EQ(sample.network_adapter, FirstActiveAdapter());
}

TEST(SampleTelemetry, ListsTheFixedDrivesInOrder) {
  std::vector<std::wstring> want;
  for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
    const std::wstring drive = {letter, L':'};
    if (GetDriveTypeW((drive + L"\\").c_str()) == DRIVE_FIXED &&
        GetDiskFreeSpaceExW((drive + L"\\").c_str(), nullptr, nullptr, nullptr))
      want.push_back(drive);
  }
  std::vector<std::wstring> got;
  for (const DiskUsage& disk : SampleTelemetry().disks) {
    got.push_back(disk.drive);
    ULARGE_INTEGER total = {};
    ASSERT_TRUE(GetDiskFreeSpaceExW((disk.drive + L"\\").c_str(), nullptr, &total, nullptr));
    EXPECT_EQ(disk.total_bytes, total.QuadPart);
    EXPECT_EQ(disk.used_bytes + disk.free_bytes, disk.total_bytes);
  }
  EXPECT_EQ(got, want);
  EXPECT_FALSE(got.empty());
}

// 20 rounds, not the 1,000 of others: a graphics factory takes a tenth of a second under Wine.
TEST(Status, LeavesNoHandlesBehindInTwentyRounds) {
  auto run = [](int rounds) {
    const StandInService service({});
    TakePostedTexts();
    for (int i = 0; i < rounds; ++i) getStatus(i);
    EXPECT_EQ(TakePostedTexts().size(), static_cast<size_t>(rounds));
  };
  run(3);
  const int before = HandleCount();
  run(20);
  EXPECT_EQ(HandleCount(), before);
}

TEST(SampleTelemetry, LeavesNoHandlesBehind) {
  constexpr int kRounds = 1000;
  getTelemetry(-1);
  TakePostedTexts();
  const int before = HandleCount();
  for (int i = 0; i < kRounds; ++i) getTelemetry(i);
  EXPECT_EQ(HandleCount(), before);
  const std::vector<std::string> posted = TakePostedTexts();
  ASSERT_EQ(posted.size(), static_cast<size_t>(kRounds));
  EXPECT_EQ(json::parse(posted.back())["requestId"], kRounds - 1);
}
