#include "base/utf8.h"

#include <string>

#include <gtest/gtest.h>

TEST(IsValidUtf8, DistinguishesWellFormedFromBroken) {
  for (const std::string& valid : {std::string(), std::string("a\0b", 3), std::string("Příliš žluťoučký kůň"),
                                   std::string("\xF0\x9F\x98\x80"), std::string("\xF4\x8F\xBF\xBF")})
    EXPECT_TRUE(IsValidUtf8(valid)) << valid;
  const std::pair<const char*, const char*> broken[] = {
      {"beyond the last code point", "\xF4\x90\x80\x80"},
      {"code page 852", "P\xFD\xA1kaz"},
      {"bare continuation", "\x80"},
      {"overlong two", "\xC0\xAF"},
      {"overlong three", "\xE0\x80\xAF"},
      {"overlong four", "\xF0\x80\x80\xAF"},
      {"surrogate", "\xED\xA0\x80"},
      {"cut after two of three", "\xE2\x82"},
      {"third byte broken", "\xE2\x82\x41"},
  };
  for (const auto& [name, bytes] : broken) EXPECT_FALSE(IsValidUtf8(bytes)) << name;
}
