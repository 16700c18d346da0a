#include "exec/line_cutter.h"

#include <gtest/gtest.h>

// The fuzz corpus asserts for each of its inputs that the lines do not depend on where reads split.
TEST(LineCutter, CutsByEitherRule) {
  using Lines = std::vector<OutputLine>;
  const struct {
    const char* name;
    LineEnding ending;
    std::string input;
    Lines want;
  } cases[] = {
      {"empty lines are left out", LineEnding::kLineFeed, "a\r\n\r\nb\r\n\n", {{"a"}, {"b"}}},
      {"an unfinished line is dropped", LineEnding::kLineFeed, "a\nb\r", {{"a"}}},
      {"one CR is removed, more are not", LineEnding::kLineFeed, "a\r\r\n\r\r\n", {{"a\r"}, {"\r"}}},
      {"CR alone ends nothing", LineEnding::kLineFeed, "10%\r20%\r\nend\n", {{"10%\r20%"}, {"end"}}},
      {"blanks and bytes stay", LineEnding::kLineFeed, "  P\xFD \t\n \n", {{"  P\xFD \t"}, {" "}}},
      {"CR and CR LF are progress, LF is not",
       LineEnding::kReturnOrLineFeed,
       "a\rb\r\nc\n",
       {{"a", true}, {"b", true}, {"c", false}}},
      {"LF CR is two endings", LineEnding::kReturnOrLineFeed, "a\n\rb\n", {{"a", false}, {"b", false}}},
      {"CR CR LF adds no line", LineEnding::kReturnOrLineFeed, "a\r\r\nb\n", {{"a", true}, {"b", false}}},
      {"blanks around are trimmed, an unfinished line is dropped",
       LineEnding::kReturnOrLineFeed,
       "\t a \t b \r \t\rc",
       {{"a \t b", true}}},
  };
  for (const auto& c : cases) EXPECT_EQ(LineCutter(c.ending).Add(c.input), c.want) << c.name;
}
