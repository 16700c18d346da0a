#include "system/processes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(IsSystemProcess, MatchesTheIdOrTheWholeName) {
  struct {
    uint32_t pid;
    const wchar_t* name;
    bool want;
  } cases[] = {
      {4, L"x", true},
      {5, L"SvcHost.exe", true},
      {5, L"Registry", true},
      {5, L"svchost", false},
      {5, L"svchost.exe ", false},
      {5, L"mysvchost.exe", false},
      {5, L"Memory Compression", false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsSystemProcess(c.pid, c.name), c.want) << c.pid << ' ' << c.name;
}

TEST(IsInWindowsDirectory, ComparesTheBeginningInAnyCase) {
  EXPECT_TRUE(IsInWindowsDirectory(L"c:\\windows\\System32\\notepad.exe", L"C:\\WINDOWS"));
  EXPECT_TRUE(IsInWindowsDirectory(L"C:\\WindowsApps\\x.exe", L"C:\\Windows")) << "a plain prefix";
  EXPECT_FALSE(IsInWindowsDirectory(L"C:\\Program Files\\x.exe", L"C:\\Windows"));
  EXPECT_FALSE(IsInWindowsDirectory(L"D:\\C:\\Windows\\x.exe", L"C:\\Windows"));
  EXPECT_TRUE(IsInWindowsDirectory(L"D:\\x.exe", L""));
}

TEST(Processes, RoundsMegabytesHalfUp) {
  EXPECT_EQ(PostedReply("processes", 7, true,
                        {{"processes", ToJson({{L"Explorer.EXE", 1432, 0, 0, true},
                                               {L"Příklad.exe", 4711, 12.5, 3.25, false}})}}),
            RecordedMessage("processes"));
  const nlohmann::json message =
      nlohmann::json{{"processes", ToJson({{L"a", 4294967295u, 12.49, 0, false}})}};
  EXPECT_EQ(message["processes"][0]["mem"], 12);
  EXPECT_EQ(message["processes"][0]["pid"], 4294967295u);
}
