#include "system/telemetry.h"

#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

TelemetrySample RealisticSample() {
  TelemetrySample sample;
  sample.cpu = 12.5;
  sample.ram_load = 47;
  sample.ram_total_gb = 31.1;
  sample.ram_used_gb = 14.6;
  sample.disks = {{L"C:", 1'000'000'000'000, 250'000'000'000, 750'000'000'000}, {L"D:", 0, 0, 0}};
  sample.download = 10;
  sample.upload = 0.25;
  sample.network_adapter = L"Připojení k síti";
  sample.battery = {true, true, 80, 5400, false};
  sample.cpu_temp = 39.5;
  sample.gpu_temp = 40.49;
  return sample;
}

}  // namespace

TEST(CpuLoadPercent, IsTheShareOfTimeNotIdle) {
  EXPECT_DOUBLE_EQ(CpuLoadPercent({0, 0, 0}, {700, 900, 100}), 0) << "first sample";
  EXPECT_DOUBLE_EQ(CpuLoadPercent({100, 200, 300}, {150, 270, 330}), 50);
  EXPECT_DOUBLE_EQ(CpuLoadPercent({100, 200, 300}, {100, 200, 300}), 0) << "no time passed";
  EXPECT_DOUBLE_EQ(CpuLoadPercent({100, 200, 300}, {203, 300, 300}), -3) << "idle counted ahead of the sum";
}

TEST(SumOctets, CountsEveryInterfaceButTheLoopback) {
  constexpr uint32_t kEthernet = 6, kWireless = 71, kLoopback = 24;
  const NetworkCounters sum = SumOctets(std::vector<InterfaceOctets>{
      {kEthernet, 4'294'967'295, 10}, {kLoopback, 1000, 1000}, {kWireless, 2, 4'294'967'295}});
  EXPECT_EQ(sum.received, 4'294'967'297u) << "beyond 32 bits";
  EXPECT_EQ(sum.sent, 4'294'967'305u);
}

TEST(RatesBetween, AreMegabitsAndNeverNegative) {
  struct {
    const char* name;
    NetworkCounters previous, now;
    double download, upload;
  } cases[] = {
      {"first sample", {0, 0, 0}, {5'000'000, 5'000'000, 60'000}, 0, 0},
      {"for 3 s", {1000, 1000, 60'000}, {3'933'160, 132'072, 63'000}, 10.0, 1.0 / 3},
      {"one direction wrapped", {4'294'967'000, 0, 60'000}, {1000, 131'072, 61'000}, 0, 1},
      {"no time passed", {0, 0, 60'000}, {1000, 1000, 60'000}, 0, 0},
  };
  for (const auto& c : cases) {
    const NetworkRates rates = RatesBetween(c.previous, c.now);
    EXPECT_DOUBLE_EQ(rates.download, c.download) << c.name;
    EXPECT_DOUBLE_EQ(rates.upload, c.upload) << c.name;
  }
}

TEST(DescribeBattery, ReadsThePowerStatus) {
  struct {
    const char* name;
    Battery got;
    std::tuple<bool, bool, int, int, bool> want;
  } cases[] = {
      {"desktop", DescribeBattery(128, 255, 0xFFFFFFFF, 0), {false, false, 255, -1, false}},
      {"charging", DescribeBattery(8 | 1, 97, 0xFFFFFFFF, 0), {true, true, 97, -1, false}},
      {"on battery, saver on", DescribeBattery(2, 19, 1800, 1), {true, false, 19, 1800, true}},
      {"percent unknown", DescribeBattery(1, 255, 7200, 0), {false, false, 255, 7200, false}},
  };
  for (const auto& [name, got, want] : cases)
    EXPECT_EQ(std::tie(got.present, got.charging, got.percent, got.life_time_s, got.saver_mode), want)
        << name;
}

TEST(IsActiveAdapter, SkipsLoopbackTunnelAndInactiveAdapters) {
  constexpr uint32_t kUp = 1, kDown = 2, kEthernet = 6, kWireless = 71, kLoopback = 24, kTunnel = 131;
  for (const uint32_t type : {kEthernet, kWireless}) EXPECT_TRUE(IsActiveAdapter(kUp, type));
  for (const uint32_t type : {kLoopback, kTunnel}) EXPECT_FALSE(IsActiveAdapter(kUp, type));
  EXPECT_FALSE(IsActiveAdapter(kDown, kEthernet));
}

TEST(EstimatedTemperatures, FollowTheLoadWithinBounds) {
  struct {
    double load, cpu, gpu;
  } cases[] = {{0, 34, 36}, {100, 78, 74}, {200, 89, 85}, {-50, 28, 30}};
  for (const auto& c : cases) {
    EXPECT_DOUBLE_EQ(EstimateCpuTemperature(c.load), c.cpu) << c.load;
    EXPECT_DOUBLE_EQ(EstimateGpuTemperature(c.load), c.gpu) << c.load;
  }
}

// The sample includes half a degree that rounds up, a disk without a size at 0 percent, and an adapter
// name with Czech letters.
TEST(Telemetry, IsTheRecordedMessage) {
  EXPECT_EQ(PostedReply("telemetry", 2, true, ToJson(RealisticSample())), RecordedMessage("telemetry"));
}
