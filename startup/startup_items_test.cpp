#include "startup/startup_items.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(EstimateImpact, FirstWordOfTheCommandDecides) {
  struct {
    const wchar_t* command;
    const wchar_t* want;
  } cases[] = {
      {L"C:\\Tools\\FooUpdater.exe", L"Medium"},
      {L"C:\\Tools\\notes.exe", L"Low"},
      {L"C:\\Tools\\steam_helper.exe", L"High"},
      {L"\"C:\\x\\DreamsTeamsPlayer.exe\"", L"High"},
      {L"C:\\BetRayAl\\x.exe", L"Medium"},
      {L"C:\\Up date\\x.exe", L"Low"},
      {L"", L"Low"},
  };
  for (const auto& c : cases) EXPECT_EQ(EstimateImpact(c.command), c.want) << c.command;
}

TEST(Approval, OnlyTheFirstByteOfBinaryDataCounts) {
  using Bytes = std::vector<uint8_t>;
  struct {
    const char* name;
    uint32_t type;
    Bytes data;
    bool want;
  } cases[] = {
      {"enabled", 3, {2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, false},
      {"disabled with a time", 3, {3, 0, 0, 0, 0x17, 0x79, 0xBD, 1, 0x17, 0xD9, 0xD1, 1}, true},
      {"0", 3, {0}, true},
      {"empty", 3, {}, false},
      {"REG_SZ", 1, {3, 0}, false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsDisabledByApproval(c.type, c.data), c.want) << c.name;
}

TEST(StartupItems, MatchesTheRecordedMessage) {
  const std::wstring path = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
  EXPECT_EQ(PostedReply("startup", 7, true,
                        {{"items", ToJson({{L"Steam", L"\"C:\\Program Files\\Steam\\steam.exe\" -silent",
                                            path, L"HKCU", false, L"High"},
                                           {L"Žlutý kůň", L"%windir%\\system32\\Žlutý.exe", path, L"HKLM",
                                            true, L"Low"}})}}),
            RecordedMessage("startup"));
}
