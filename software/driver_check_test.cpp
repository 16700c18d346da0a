#include "software/driver_check.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

// Returns an update in which every field is a fallback, changed by `patch`.
std::string Entry(const char* patch) {
  nlohmann::json entry = {{"title", ""},          {"description", ""},    {"categories", "Drivers"},
                          {"kbArticles", "None"}, {"currentVersion", ""}, {"availableVersion", ""},
                          {"releaseDate", ""},    {"severity", ""},       {"hardwareId", ""},
                          {"isSkipped", false}};
  entry.merge_patch(nlohmann::json::parse(patch));
  return "[" + entry.dump() + "]";
}

}  // namespace

TEST(ParseDriverCheck, MapsEveryFieldAndFallsBack) {
  const struct {
    const char* name;
    std::string output;
    std::string updates, count;
  } cases[] = {
      {"an element without fields", R"({"updates":[{}]})", Entry("{}"), "171"},
      {"the capital title wins", R"({"updates":[{"title":"t","Title":"T","IsSkipped":true}]})",
       Entry(R"({"title":"T","isSkipped":true})"), "171"},
      {"array and number pass through", R"({"updates":[{"Categories":["a","b"],"CurrentVersion":7}]})",
       Entry(R"({"categories":["a","b"],"currentVersion":7})"), "171"},
      {"updates is no array", R"({"updates":{"a":1},"scannedDriversCount":0})", "[]", "0"},
      {"byte order mark and line end", "\xEF\xBB\xBF{\"scannedDriversCount\":9}\r\n", "[]", "9"},
  };
  for (const auto& c : cases) {
    const DriverCheck check = ParseDriverCheck(c.output);
    EXPECT_EQ(check.updates.dump(), c.updates) << c.name;
    EXPECT_EQ(check.scanned_drivers_count.dump(), c.count) << c.name;
  }
}

TEST(DriverCheckFailure, IsTheFirstLineWithText) {
  std::string long_line, cut;
  for (int i = 0; i < 301; ++i) long_line += "ž";
  cut = long_line.substr(0, 600);
  const struct {
    std::string output, want;
  } cases[] = {
      {"", ""},          {"\xEF\xBB\xBF\r\n  No agent: 0x80040154\r\nAt line 1\r\n", "No agent: 0x80040154"},
      {"Není", "Není"},  {long_line, cut},
      {cut + "\n", cut},
  };
  for (const auto& c : cases) EXPECT_EQ(DriverCheckFailure(c.output), c.want);
}

TEST(DriverCheck, IsTheRecordedReply) {
  const DriverCheck check = ParseDriverCheck(
      R"({"scannedDriversCount":143,"updates":[{"Title":"Peat® - System - 10.1.5.3","Description":)"
      R"("Peat System driver update","Categories":"Drivers","KBArticles":"None","CurrentVersion":"10.1.4.0",)"
      R"("AvailableVersion":"10.1.5.3","ReleaseDate":"2024-07-01","Severity":"","HardwareId":)"
      R"("PCI\\VEN_8086&DEV_9D3A","IsSkipped":false}]})");
  EXPECT_EQ(PostedReply("driver_updates", 23, true, ToJson(check)), RecordedMessage("driver_updates"));
}
