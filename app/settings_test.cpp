#include "app/settings.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

TEST(Settings, AreTheStoredDocumentOrTheDefaults) {
  const std::string defaults = R"({"autoScan":true,"ignoreList":[],"scanInterval":24,"theme":"amethyst"})";
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "varnel_settings_test";
  const std::filesystem::path file = folder / "settings.json";
  std::filesystem::remove_all(folder);
  SaveSettings(file, 1);
  EXPECT_FALSE(exists(file)) << "a failure to open is no error";
  EXPECT_EQ(LoadSettings(file).dump(), defaults) << "no file";
  std::filesystem::create_directories(folder);
  EXPECT_EQ(LoadSettings(folder).dump(), defaults) << "a folder";
  const std::pair<std::string, std::string> cases[] = {
      {"null", "null"},
      {"{\r\n\t\"theme\" : \"x\"\r\n}\r\n", R"({"theme":"x"})"},
      {"\xEF\xBB\xBF{\"a\":1}", R"({"a":1})"},
      {"{} {}", defaults},
      {"{\"theme\":\"\xFF\"}", defaults},
      {"1e999", defaults},
      {std::string(100'000, '[') + std::string(100'000, ']'), defaults},
  };
  for (const auto& [stored, want] : cases) {
    std::ofstream(file, std::ios::binary) << stored;
    EXPECT_EQ(LoadSettings(file).dump(), want) << stored.substr(0, 40);
  }
  const nlohmann::json settings = {{"theme", "Žluť"}, {"ignoreList", {{{"type", "app"}}}}};
  SaveSettings(file, settings);
  const std::string stored{std::istreambuf_iterator<char>(std::ifstream(file, std::ios::binary).rdbuf()), {}};
  EXPECT_EQ(stored,
            "{\n    \"ignoreList\": [\n        {\n            \"type\": \"app\"\n        }\n    ],\n"
            "    \"theme\": \"Žluť\"\n}");
  EXPECT_EQ(LoadSettings(file), settings);
  std::filesystem::remove_all(folder);
}
