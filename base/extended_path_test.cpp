#include "base/extended_path.h"

#include <gtest/gtest.h>

TEST(ExtendedPath, PrefixesEachKindOfAbsolutePath) {
  struct {
    const wchar_t* path;
    const wchar_t* want;
  } cases[] = {
      {LR"(C:\Windows\Temp)", LR"(\\?\C:\Windows\Temp)"},       {LR"(d:\)", LR"(\\?\d:\)"},
      {LR"(\\server\share\a)", LR"(\\?\UNC\server\share\a)"},   {LR"(\\?\C:\dots.)", LR"(\\?\C:\dots.)"},
      {LR"(\\?\UNC\server\share)", LR"(\\?\UNC\server\share)"}, {LR"(\\.\C:\a)", LR"(\\.\C:\a)"},
  };
  for (const auto& c : cases) EXPECT_EQ(ExtendedPath(c.path), c.want);
}
