#include "app/debug_report.h"

#include "base/byte_units.h"
#include "base/text.h"

std::vector<std::string> FormatDebugSpecs(const HardwareSpecs& specs) {
  return {
      "[DebugSpecs] CPU: " + WideToUtf8(specs.cpu),
      "[DebugSpecs] GPU: " + WideToUtf8(specs.gpu),
      "[DebugSpecs] RAM: " + WideToUtf8(specs.ram),
      "[DebugSpecs] OS: " + WideToUtf8(specs.os),
      std::string("[DebugSpecs] IsAdmin: ") + (specs.is_admin ? "TRUE" : "FALSE"),
  };
}

std::vector<std::string> FormatDebugTelemetry(const TelemetrySample& sample) {
  // std::to_string formats a double like "%f". The program never leaves the "C" locale.
  auto number = [](double value) { return std::to_string(value); };
  auto gigabytes = [&](uint64_t bytes) { return number(static_cast<double>(bytes) / kBytesPerGigabyte); };
  std::vector<std::string> lines = {
      "[DebugTelemetry] CPU Load: " + number(sample.cpu) + "%",
      "[DebugTelemetry] RAM Total: " + number(sample.ram_total_gb) +
          " GB, Used: " + number(sample.ram_used_gb) + " GB",
  };
  for (const DiskUsage& disk : sample.disks)
    lines.push_back("[DebugTelemetry] Disk " + WideToUtf8(disk.drive) + ": " + gigabytes(disk.free_bytes) +
                    " GB free / " + gigabytes(disk.total_bytes) + " GB total");
  lines.push_back("[DebugTelemetry] Download: " + number(sample.download) +
                  " Mbps, Upload: " + number(sample.upload) + " Mbps");
  lines.push_back("[DebugTelemetry] Active Network Adapter: " + WideToUtf8(sample.network_adapter));
  return lines;
}
