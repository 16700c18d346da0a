#include "base/utf8.h"

#include <string>

#include <gtest/gtest.h>

TEST(IsValidUtf8, TellsWellFormedFromBroken) {
  struct {
    const char* name;
    std::string bytes;
    bool want;
  } cases[] = {
      {"empty", "", true},
      {"ascii with a zero byte", std::string("a\0b", 3), true},
      {"Czech", "Příliš žluťoučký kůň", true},
      {"four bytes", "\xF0\x9F\x98\x80", true},
      {"last code point", "\xF4\x8F\xBF\xBF", true},
      {"beyond the last", "\xF4\x90\x80\x80", false},
      {"code page 852", "P\xFD\xA1kaz", false},
      {"bare continuation", "\x80", false},
      {"overlong two", "\xC0\xAF", false},
      {"overlong three", "\xE0\x80\xAF", false},
      {"overlong four", "\xF0\x80\x80\xAF", false},
      {"surrogate", "\xED\xA0\x80", false},
      {"cut after two of three", "\xE2\x82", false},
      {"third byte broken", "\xE2\x82\x41", false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsValidUtf8(c.bytes), c.want) << c.name;
}
