#include "app/settings.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace {

class Settings : public testing::Test {
 protected:
  Settings() { std::filesystem::create_directories(folder_); }
  ~Settings() override { std::filesystem::remove_all(folder_); }

  void Write(const std::string& text) { std::ofstream(file_, std::ios::binary) << text; }
  std::string Read() {
    std::ifstream stream(file_, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(stream), {}};
  }

  const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "varnel_settings_test";
  const std::filesystem::path file_ = folder_ / "settings.json";
};

constexpr const char* kDefaults = R"({"autoScan":true,"ignoreList":[],"scanInterval":24,"theme":"amethyst"})";

}  // namespace

TEST_F(Settings, ReturnsWhatIsStoredElseTheDefaults) {
  EXPECT_EQ(LoadSettings(file_).dump(), kDefaults) << "no file";
  EXPECT_EQ(LoadSettings(folder_).dump(), kDefaults) << "a folder";
  const struct {
    const char* name;
    std::string stored, want;
  } cases[] = {
      {"array", "[1,2]", "[1,2]"},
      {"null", "null", "null"},
      {"no defaults are merged", "{\r\n\t\"theme\" : \"x\"\r\n}\r\n", R"({"theme":"x"})"},
      {"byte order mark", "\xEF\xBB\xBF{\"a\":1}", R"({"a":1})"},
      {"syntax error", "{\"theme\":", kDefaults},
      {"two documents", "{} {}", kDefaults},
      {"empty", "", kDefaults},
      {"not UTF-8", "{\"theme\":\"\xFF\"}", kDefaults},
      {"number overflow", "1e999", kDefaults},
      {"too deep", std::string(100'000, '[') + std::string(100'000, ']'), kDefaults},
  };
  for (const auto& c : cases) {
    Write(c.stored);
    EXPECT_EQ(LoadSettings(file_).dump(), c.want) << c.name;
  }
}

TEST_F(Settings, StoresEveryJsonTypeInItsExactForm) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"theme":"Žluť","ignoreList":[{"type":"app","id":"a"}]})",
       "{\n    \"ignoreList\": [\n        {\n            \"id\": \"a\",\n            \"type\": \"app\"\n        }\n    ],\n"
       "    \"theme\": \"Žluť\"\n}"},
      {"null", "null"},
      {"1.5", "1.5"},
  };
  for (const auto& [document, want] : cases) {
    SaveSettings(file_, nlohmann::json::parse(document));
    EXPECT_EQ(Read(), want);
    EXPECT_EQ(LoadSettings(file_), nlohmann::json::parse(document)) << document;
  }
  EXPECT_NO_THROW(SaveSettings(folder_ / "absent" / "settings.json", 1)) << "a failure to open is no error";
}

TEST_F(Settings, IsEmptiedBeforeTextThatCannotBeWritten) {
  Write("{}");
  EXPECT_THROW(SaveSettings(file_, "\xFF"), nlohmann::json::type_error);
  EXPECT_EQ(Read(), "");
}
