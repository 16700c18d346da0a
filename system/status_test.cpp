#include "system/status.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

HardwareSpecs RealisticSpecs() {
  HardwareSpecs specs;
  specs.cpu = L"Meadow 7 0000X 8-Core Processor             ";
  specs.gpu = L"Heron Graphics 40 (12.0 GB VRAM)";
  specs.ram = L"32 GB DDR5 @ 6000 MHz (2x 16 GB)";
  specs.ram_tooltip =
      L"Fyzicky osazeno: 32 GB | K dispozici pro systém: 31.1 GB (941 MB vyhrazeno pro BIOS a hardware)";
  specs.motherboard = L"Copse B650 TARN";
  specs.os = L"Windows 11 Pro (Version 23H2)";
  return specs;
}

}  // namespace

TEST(DescribeStatus, IsTheRecordedMessage) {
  EXPECT_EQ(PostedReply("status", 1, true, DescribeStatus(true, RealisticSpecs())),
            RecordedMessage("status"));
}

TEST(PushStatus, WaitsAtMostFifteenRoundsForTheService) {
  constexpr int kNever = 1000;
  const struct {
    bool elevated;
    int first_answer;  // number of the first probe that the service answers, from 0
    std::vector<bool> posted;
    size_t sleeps;
  } cases[] = {
      {false, 0, {true}, 0},          {true, kNever, {false}, 0}, {false, 3, {false, true}, 3},
      {false, 15, {false, true}, 15}, {false, 16, {false}, 15},
  };
  for (const auto& c : cases) {
    int probes = 0;
    std::vector<unsigned> sleeps;
    HardwareSpecs specs = RealisticSpecs();
    specs.is_admin = c.elevated;
    TakePostedTexts();
    PushStatus({[&] { return probes++ >= c.first_answer; }, [&] { return specs; },
                [&](unsigned milliseconds) { sleeps.push_back(milliseconds); }});
    std::vector<bool> posted;
    for (const nlohmann::json& message : TakePostedMessages()) posted.push_back(message["serviceActive"]);
    EXPECT_EQ(posted, c.posted) << c.first_answer;
    EXPECT_EQ(sleeps, std::vector<unsigned>(c.sleeps, 2000)) << c.first_answer;
  }
}
