#include "exec/safe_argument.h"

#include <string>

#include <gtest/gtest.h>

TEST(IsSafeCommandArgument, AcceptsIdentifiersAndRefusesSyntax) {
  for (const char* text : {"", "Brook.TarnSync", "Heron Media (x64) - 24.3:1_b", "AZaz09"})
    EXPECT_TRUE(IsSafeCommandArgument(text)) << text;
  for (const char* text : {"a&b", "a|b", "a\"b", "a/b", "a\\b", "a\tb", "a\nb", "a%b", "a^b", "a'b", "a;b",
                           "a,b", "a>b", "Tarn\xC3\xA1", "\x80"})
    EXPECT_FALSE(IsSafeCommandArgument(text)) << text;
  EXPECT_FALSE(IsSafeCommandArgument(std::string_view("a\0b", 3)));
  int accepted = 0;
  for (int byte = 0; byte < 256; ++byte)
    accepted += IsSafeCommandArgument(std::string(1, static_cast<char>(byte)));
  EXPECT_EQ(accepted, 26 + 26 + 10 + 7);
}
