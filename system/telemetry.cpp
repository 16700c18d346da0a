#include "system/telemetry.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/text.h"

namespace {

constexpr uint32_t kSoftwareLoopback = 24, kTunnel = 131;

}  // namespace

double CpuLoadPercent(const CpuTimes& previous, const CpuTimes& now) {
  if (previous.idle == 0) return 0;
  // Signed, because the idle time is read separately from the others and may exceed their sum by a tick.
  const auto idle = static_cast<int64_t>(now.idle - previous.idle);
  const auto total = static_cast<int64_t>((now.user - previous.user) + (now.kernel - previous.kernel));
  if (total == 0) return 0;
  return (static_cast<double>(total) - static_cast<double>(idle)) * 100.0 / static_cast<double>(total);
}

NetworkCounters SumOctets(std::span<const InterfaceOctets> interfaces) {
  NetworkCounters sum;
  for (const InterfaceOctets& octets : interfaces) {
    if (octets.type == kSoftwareLoopback) continue;
    sum.received += octets.received;
    sum.sent += octets.sent;
  }
  return sum;
}

NetworkRates RatesBetween(const NetworkCounters& previous, const NetworkCounters& now) {
  if (previous.time_ms == 0 || now.time_ms <= previous.time_ms) return {};
  const double seconds = static_cast<double>(now.time_ms - previous.time_ms) / 1000.0;
  auto rate = [seconds](uint64_t before, uint64_t after) {
    const uint64_t octets = after > before ? after - before : 0;
    return static_cast<double>(octets) * 8.0 / 1'048'576.0 / seconds;
  };
  return {rate(previous.received, now.received), rate(previous.sent, now.sent)};
}

Battery DescribeBattery(uint8_t battery_flag, uint8_t life_percent, uint32_t life_time_s,
                        uint8_t system_status_flag) {
  constexpr uint8_t kCharging = 8, kNoBattery = 128, kUnknown = 255;
  Battery battery;
  battery.present = battery_flag != kNoBattery && battery_flag < kUnknown && life_percent < kUnknown;
  battery.charging = (battery_flag & kCharging) != 0;
  battery.percent = life_percent;
  battery.life_time_s = static_cast<int32_t>(life_time_s);
  battery.saver_mode = system_status_flag == 1;
  return battery;
}

bool IsActiveAdapter(uint32_t oper_status, uint32_t if_type) {
  constexpr uint32_t kUp = 1;
  return oper_status == kUp && if_type != kSoftwareLoopback && if_type != kTunnel;
}

double EstimateCpuTemperature(double load_percent) {
  return std::clamp(load_percent * 0.44 + 34.0, 28.0, 89.0);
}

double EstimateGpuTemperature(double load_percent) {
  return std::clamp(load_percent * 0.38 + 36.0, 30.0, 85.0);
}

nlohmann::json ToJson(const TelemetrySample& sample) {
  nlohmann::json disks = nlohmann::json::array();
  for (const DiskUsage& disk : sample.disks) {
    const std::string drive = WideToUtf8(disk.drive);
    const double percent = disk.total_bytes == 0 ? 0.0
                                                 : static_cast<double>(disk.used_bytes) /
                                                       static_cast<double>(disk.total_bytes) * 100.0;
    disks.push_back({{"drive", drive},
                     {"driveLetter", drive},
                     {"totalBytes", disk.total_bytes},
                     {"freeBytes", disk.free_bytes},
                     {"usedBytes", disk.used_bytes},
                     {"percent", percent}});
  }
  return {{"cpu", sample.cpu},
          {"ram", sample.ram_load},
          {"cpuTemp", std::round(sample.cpu_temp)},
          {"gpuTemp", std::round(sample.gpu_temp)},
          {"download", sample.download},
          {"upload", sample.upload},
          {"networkAdapter", WideToUtf8(sample.network_adapter)},
          {"battery",
           {{"hasBattery", sample.battery.present},
            {"isCharging", sample.battery.charging},
            {"percent", sample.battery.percent},
            {"lifeTime", sample.battery.life_time_s},
            {"saverMode", sample.battery.saver_mode}}},
          {"disks", std::move(disks)}};
}
