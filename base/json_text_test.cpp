#include "base/json_text.h"

#include <string>

#include <gtest/gtest.h>

TEST(ParseJson, IsStrictAndBoundsNesting) {
  for (const char* text : {"", "{} x", "{\"a\":1,}", "// c\n1", "\xFF", "[1"})
    EXPECT_THROW(ParseJson(text), nlohmann::json::parse_error) << text;
  EXPECT_EQ(ParseJson(" {\"a\":[1,null]} ").dump(), "{\"a\":[1,null]}");

  const auto nested = [](size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_NO_THROW(ParseJson(nested(kMaxJsonDepth)));
  EXPECT_THROW(ParseJson(nested(kMaxJsonDepth + 1)), std::length_error);
  EXPECT_THROW(ParseJson(std::string(2'000'000, '[')), nlohmann::json::parse_error);
  EXPECT_NO_THROW(ParseJson("\"\\\"" + std::string(kMaxJsonDepth + 1, '[') + "\"")) << "brackets in a text";
}

TEST(ParseJson, TakesTimeProportionalToTheText) {
  std::string text = "[{}";
  for (int i = 1; i < 1'000'000; ++i) text += ",{}";
  EXPECT_EQ(ParseJson(text + "]").size(), 1'000'000u);  // takes hours if the time is quadratic
}
