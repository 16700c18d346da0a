#include "system/status.h"

#include <numeric>
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

// Runs a push on a machine whose service answers the probe number `first_answer` (from 0) and all later ones.
struct Push {
  Push(bool elevated, int first_answer) {
    TakePostedTexts();
    PushStatus({[&] { return probes++ >= first_answer; },
                [&] {
                  HardwareSpecs specs = RealisticSpecs();
                  specs.is_admin = elevated;
                  return specs;
                },
                [&](unsigned milliseconds) { sleeps.push_back(milliseconds); }});
    posted = TakePostedMessages();
  }
  int probes = 0;
  std::vector<unsigned> sleeps;
  std::vector<nlohmann::json> posted;
};

constexpr int kNever = 1000;

}  // namespace

TEST(BuildStatus, IsTheRecordedMessage) {
  EXPECT_EQ(BuildStatus(1, true, RealisticSpecs()).dump(), RecordedMessage("status"));
}

TEST(PushStatus, PostsOnceWhenThereIsNothingToWaitFor) {
  for (const Push& push : {Push(false, 0), Push(true, 0), Push(true, kNever)}) {
    ASSERT_EQ(push.posted.size(), 1u);
    EXPECT_EQ(push.posted[0]["requestId"], 0);
    EXPECT_EQ(push.probes, 1);
    EXPECT_TRUE(push.sleeps.empty());
  }
  EXPECT_EQ(Push(true, kNever).posted[0]["isAdmin"], true);
}

TEST(PushStatus, PostsTheSameAgainWhenTheServiceComes) {
  const Push push(false, 3);
  ASSERT_EQ(push.posted.size(), 2u);
  EXPECT_EQ(push.posted[0], BuildStatus(0, false, RealisticSpecs()));
  EXPECT_EQ(push.posted[1], BuildStatus(0, true, RealisticSpecs()));
  EXPECT_EQ(push.sleeps, std::vector<unsigned>(3, 2000));
}

TEST(PushStatus, WaitsFifteenRoundsAtMost) {
  EXPECT_EQ(Push(false, 15).posted.size(), 2u);
  const Push push(false, 16);
  EXPECT_EQ(push.posted.size(), 1u);
  EXPECT_EQ(push.sleeps, std::vector<unsigned>(15, 2000));
  EXPECT_EQ(push.probes, 16);
}
