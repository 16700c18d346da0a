#include "system/telemetry.h"

#include <string>
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
  struct {
    const char* name;
    CpuTimes previous, now;
    double want;
  } cases[] = {
      {"first sample", {0, 0, 0}, {700, 900, 100}, 0},
      {"half", {100, 200, 300}, {150, 270, 330}, 50},
      {"no time passed", {100, 200, 300}, {100, 200, 300}, 0},
      {"idle counted ahead of the sum", {100, 200, 300}, {203, 300, 300}, -3},
  };
  for (const auto& c : cases) EXPECT_DOUBLE_EQ(CpuLoadPercent(c.previous, c.now), c.want) << c.name;
}

TEST(SumOctets, CountsEveryInterfaceButTheLoopback) {
  constexpr uint32_t kEthernet = 6, kWireless = 71, kLoopback = 24;
  struct {
    const char* name;
    std::vector<InterfaceOctets> interfaces;
    uint64_t received, sent;
  } cases[] = {
      {"directions stay apart", {{kEthernet, 100, 7}}, 100, 7},
      {"loopback in the middle", {{kEthernet, 1, 10}, {kLoopback, 1000, 1000}, {kWireless, 2, 20}}, 3, 30},
      {"more than 32 bits",
       {{kEthernet, 4'294'967'295, 4'294'967'295}, {kWireless, 1, 4'294'967'295}},
       4'294'967'296,
       8'589'934'590},
  };
  for (const auto& c : cases) {
    const NetworkCounters sum = SumOctets(c.interfaces);
    EXPECT_EQ(sum.received, c.received) << c.name;
    EXPECT_EQ(sum.sent, c.sent) << c.name;
  }
}

TEST(RatesBetween, AreMegabitsAndNeverNegative) {
  struct {
    const char* name;
    NetworkCounters previous, now;
    double download, upload;
  } cases[] = {
      {"first sample", {0, 0, 0}, {5'000'000, 5'000'000, 60'000}, 0, 0},
      {"ten megabits for 3 s",
       {1000, 1000, 60'000},
       {1000 + 3'932'160, 1000 + 131'072, 63'000},
       10.0,
       1.0 / 3},
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
    uint8_t flag, percent;
    uint32_t life_time_s;
    uint8_t status;
    bool present, charging;
    int32_t want_life_time;
    bool saver;
  } cases[] = {
      {"desktop", 128, 255, 0xFFFFFFFF, 0, false, false, -1, false},
      {"charging", 8 | 1, 97, 0xFFFFFFFF, 0, true, true, -1, false},
      {"on battery, saver on", 2, 19, 1800, 1, true, false, 1800, true},
      {"percent unknown", 1, 255, 7200, 0, false, false, 7200, false},
  };
  for (const auto& c : cases) {
    const Battery battery = DescribeBattery(c.flag, c.percent, c.life_time_s, c.status);
    EXPECT_EQ(battery.present, c.present) << c.name;
    EXPECT_EQ(battery.charging, c.charging) << c.name;
    EXPECT_EQ(battery.percent, c.percent) << c.name;
    EXPECT_EQ(battery.life_time_s, c.want_life_time) << c.name;
    EXPECT_EQ(battery.saver_mode, c.saver) << c.name;
  }
}

TEST(IsActiveAdapter, SkipsLoopbackTunnelAndInactiveAdapters) {
  EXPECT_TRUE(IsActiveAdapter(1, 6)) << "Ethernet";
  EXPECT_TRUE(IsActiveAdapter(1, 71)) << "wireless";
  EXPECT_FALSE(IsActiveAdapter(2, 6)) << "down";
  EXPECT_FALSE(IsActiveAdapter(1, 24)) << "loopback";
  EXPECT_FALSE(IsActiveAdapter(1, 131)) << "tunnel";
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
