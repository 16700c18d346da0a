#include "exec/line_cutter.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<OutputLine>;

Lines Cut(LineEnding ending, const std::vector<std::string_view>& pieces) {
  LineCutter cutter(ending);
  Lines all;
  for (const std::string_view piece : pieces)
    for (OutputLine& line : cutter.Add(piece)) all.push_back(std::move(line));
  return all;
}

}  // namespace

TEST(LineCutter, LineFeedRule) {
  struct {
    const char* name;
    std::string input;
    Lines want;
  } cases[] = {
      {"empty lines are left out", "a\r\n\r\nb\r\n\n", {{"a"}, {"b"}}},
      {"an unfinished line is dropped", "a\nb", {{"a"}}},
      {"an unfinished line that ends in CR is dropped", "a\nb\r", {{"a"}}},
      {"one CR is removed, more are not", "a\r\r\n\r\r\n", {{"a\r"}, {"\r"}}},
      {"CR alone ends nothing", "10%\r20%\r\nend\n", {{"10%\r20%"}, {"end"}}},
      {"blanks stay", "  a \t\n \n", {{"  a \t"}, {" "}}},
      {"bytes stay", "P\xFD\xA1kaz\n", {{"P\xFD\xA1kaz"}}},
  };
  for (const auto& c : cases) EXPECT_EQ(Cut(LineEnding::kLineFeed, {c.input}), c.want) << c.name;
}

TEST(LineCutter, ReturnOrLineFeedRule) {
  struct {
    const char* name;
    std::string input;
    Lines want;
  } cases[] = {
      {"CR and CR LF are progress, LF is not", "a\rb\r\nc\n", {{"a", true}, {"b", true}, {"c", false}}},
      {"LF CR is two endings", "a\n\rb\n", {{"a", false}, {"b", false}}},
      {"CR CR LF adds no line", "a\r\r\nb\n", {{"a", true}, {"b", false}}},
      {"blanks around are trimmed, inside they stay", "\t a \t b \r \t\r", {{"a \t b", true}}},
      {"an unfinished line is dropped", "a\rb", {{"a", true}}},
      {"a spinner",
       "\r   - \r   \\ \r      \rFound Tarn\r\n",
       {{"-", true}, {"\\", true}, {"Found Tarn", true}}},
  };
  for (const auto& c : cases) EXPECT_EQ(Cut(LineEnding::kReturnOrLineFeed, {c.input}), c.want) << c.name;
}

TEST(LineCutter, GivesTheSameLinesWhereverReadsSplit) {
  const std::string_view sample =
      "\r   - \rFound P\xC5\x99\xC3\xADklad\r\n\r\nA\r\r\n  \xE2\x96\x88\xE2\x96\x92 1 MB\r  2 MB\r\n\nDone \nrest";
  for (const LineEnding ending : {LineEnding::kLineFeed, LineEnding::kReturnOrLineFeed}) {
    const Lines want = Cut(ending, {sample});
    ASSERT_GE(want.size(), 4u);
    for (size_t i = 0; i <= sample.size(); ++i)
      for (size_t k = i; k <= sample.size(); ++k)
        ASSERT_EQ(Cut(ending, {sample.substr(0, i), sample.substr(i, k - i), sample.substr(k)}), want)
            << i << ' ' << k;
  }
}
