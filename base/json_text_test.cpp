#include "base/json_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Nested(size_t depth, const char* open, const char* close) {
  std::string text;
  for (size_t i = 0; i < depth; ++i) text += open;
  text += "1";
  for (size_t i = 0; i < depth; ++i) text += close;
  return text;
}

}  // namespace

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
  EXPECT_NO_THROW(ParseJson(Nested(10'000, "[", "]")));
  EXPECT_NO_THROW(ParseJson(Nested(10'000, "{\"a\":", "}")));
  EXPECT_THROW(ParseJson(Nested(kMaxJsonDepth + 2, "[", "]")), std::length_error);
  EXPECT_THROW(ParseJson(std::string(2'000'000, '[')), std::exception);
  const std::string brackets_in_text = "\"" + std::string(kMaxJsonDepth + 2, '[') + "\\\"[\"";
  EXPECT_NO_THROW(ParseJson(brackets_in_text));
}
