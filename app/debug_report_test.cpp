#include "app/debug_report.h"

#include <gtest/gtest.h>

TEST(DebugReport, PrintsTextsAndSixDigits) {
  HardwareSpecs specs;
  specs.cpu = L"Procesor č. 1";
  specs.gpu = L"Adapter (4.0 GB VRAM)";
  specs.ram = L"32 GB DDR5";
  specs.os = L"Windows 11 Pro (Version 23H2)";
  specs.is_admin = true;
  EXPECT_EQ(FormatDebugSpecs(specs),
            (std::vector<std::string>{
                "[DebugSpecs] CPU: Procesor č. 1", "[DebugSpecs] GPU: Adapter (4.0 GB VRAM)",
                "[DebugSpecs] RAM: 32 GB DDR5", "[DebugSpecs] OS: Windows 11 Pro (Version 23H2)",
                "[DebugSpecs] IsAdmin: TRUE"}));
  specs.is_admin = false;
  EXPECT_EQ(FormatDebugSpecs(specs).back(), "[DebugSpecs] IsAdmin: FALSE");

  TelemetrySample sample;
  sample.cpu = 12.5;
  sample.ram_total_gb = 31.875;
  sample.ram_used_gb = 0.1234567;
  sample.disks = {{L"C:", 107374182400, 16106127360, 0}, {L"D:", 0, 1, 0}};
  sample.download = 10;
  sample.network_adapter = L"Síť";
  EXPECT_EQ(FormatDebugTelemetry(sample),
            (std::vector<std::string>{
                "[DebugTelemetry] CPU Load: 12.500000%",
                "[DebugTelemetry] RAM Total: 31.875000 GB, Used: 0.123457 GB",
                "[DebugTelemetry] Disk C:: 15.000000 GB free / 100.000000 GB total",
                "[DebugTelemetry] Disk D:: 0.000000 GB free / 0.000000 GB total",
                "[DebugTelemetry] Download: 10.000000 Mbps, Upload: 0.000000 Mbps",
                "[DebugTelemetry] Active Network Adapter: Síť",
            }));
}
