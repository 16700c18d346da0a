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
      {"all fields",
       R"({"scannedDriversCount":143,"updates":[{"Title":"T","Description":"D","Categories":"C","KBArticles":"KB1",)"
       R"("CurrentVersion":"1","AvailableVersion":"2","ReleaseDate":"2024-07-01","Severity":"S","HardwareId":"PCI\\VEN",)"
       R"("IsSkipped":true,"other":1}]})",
       R"([{"availableVersion":"2","categories":"C","currentVersion":"1","description":"D","hardwareId":"PCI\\VEN",)"
       R"("isSkipped":true,"kbArticles":"KB1","releaseDate":"2024-07-01","severity":"S","title":"T"}])",
       "143"},
      {"an element without fields", R"({"updates":[{}]})", Entry("{}"), "171"},
      {"the capital title wins", R"({"updates":[{"title":"t","Title":"T"}]})", Entry(R"({"title":"T"})"),
       "171"},
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

TEST(ParseDriverCheck, ThrowsForAnythingButJson) {
  for (const char* output : {"", "WARNING: x\r\n{}", "{} {}"})
    EXPECT_THROW(ParseDriverCheck(output), std::exception) << output;
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
