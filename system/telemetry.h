#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

struct DiskUsage {
  std::wstring drive;  // "C:"
  uint64_t total_bytes = 0;
  uint64_t free_bytes = 0;
  uint64_t used_bytes = 0;
};

struct Battery {
  bool present = false;  // there is a battery and it reports
  bool charging = false;
  int32_t percent = 0;       // 255: unknown
  int32_t life_time_s = -1;  // -1: unknown
  bool saver_mode = false;
};

struct TelemetrySample {
  double cpu = 0;       // percent since the previous sample
  double ram_load = 0;  // percent
  double ram_total_gb = 0;
  double ram_used_gb = 0;
  std::vector<DiskUsage> disks;  // fixed drives in the system's order
  double download = 0;           // 2^20 bits per second since the previous sample
  double upload = 0;
  std::wstring network_adapter;  // friendly name, or "No Active Adapter"
  Battery battery;
  double cpu_temp = 0;  // degrees Celsius, estimated from the load; no sensor is read
  double gpu_temp = 0;
};

// Takes a sample and posts it. UI thread.
void getTelemetry(int request_id);

// Takes one sample (GetSystemTimes, GlobalMemoryStatusEx, GetLogicalDriveStringsW, GetIfTable,
// GetAdaptersAddresses, GetSystemPowerStatus). Load and rates are relative to the previous call by any
// caller. They live in process-wide values without a lock, so only the UI thread may call this. Never
// fails: a value that cannot be read stays 0.
TelemetrySample SampleTelemetry();

// Times of all processors since system start, in 100 ns. Kernel time includes idle time.
struct CpuTimes {
  uint64_t idle = 0, kernel = 0, user = 0;
};

// Returns the load in percent between two readings, or 0 if there is no earlier reading (idle 0) or no
// time has passed.
double CpuLoadPercent(const CpuTimes& previous, const CpuTimes& now);

// Octets of all interfaces, and the system's tick count at that time.
struct NetworkCounters {
  uint64_t received = 0, sent = 0, time_ms = 0;
};

// One interface's type (IANA number) and its 32-bit system counters.
struct InterfaceOctets {
  uint32_t type = 0, received = 0, sent = 0;
};

// Returns the sum over every interface except the loopback. Leaves time_ms at 0.
NetworkCounters SumOctets(std::span<const InterfaceOctets> interfaces);

struct NetworkRates {
  double download = 0, upload = 0;  // 2^20 bits per second
};

// Returns the rates between two readings, or 0 if there is no earlier reading (time 0) or no time has
// passed. The rate of a counter that went backwards is 0, too.
NetworkRates RatesBetween(const NetworkCounters& previous, const NetworkCounters& now);

// Converts the fields of SYSTEM_POWER_STATUS as the system reports them.
Battery DescribeBattery(uint8_t battery_flag, uint8_t life_percent, uint32_t life_time_s,
                        uint8_t system_status_flag);

// Returns true if an adapter with this operational status and interface type (IANA numbers) is up and is
// neither a loopback nor a tunnel.
bool IsActiveAdapter(uint32_t oper_status, uint32_t if_type);

double EstimateCpuTemperature(double load_percent);
double EstimateGpuTemperature(double load_percent);

// Returns the members of the page's telemetry message.
nlohmann::json ToJson(const TelemetrySample& sample);
