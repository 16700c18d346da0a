#include "base/json_text.h"

#include <string>

#include <gtest/gtest.h>

TEST(ParseJson, IsStrict) {
  for (const char* text : {"", "not json", "{} x", "{\"a\":1,}", "// c\n1", "\xFF", "[1"})
    EXPECT_THROW(ParseJson(text), nlohmann::json::parse_error) << text;
  EXPECT_EQ(ParseJson(" {\"a\":[1,null]} ").dump(), "{\"a\":[1,null]}");
}

TEST(ParseJson, TakesTimeInProportionToTheText) {
  std::string text = "[{}";
  for (int i = 1; i < 1'000'000; ++i) text += ",{}";
  EXPECT_EQ(ParseJson(text + "]").size(), 1'000'000u);  // for hours when each element costs a look at all
}

TEST(ParseJson, BoundsNesting) {
  const auto nested = [](size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_NO_THROW(ParseJson(nested(kMaxJsonDepth)));
  EXPECT_THROW(ParseJson(nested(kMaxJsonDepth + 1)), std::length_error);
  EXPECT_THROW(ParseJson(std::string(2'000'000, '[')), nlohmann::json::parse_error);
  const std::string brackets_in_text = "\"\\\"" + std::string(kMaxJsonDepth + 1, '[') + "\"";
  EXPECT_NO_THROW(ParseJson(brackets_in_text));
}
