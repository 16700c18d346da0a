#include "base/extended_path.h"

#include <gtest/gtest.h>

TEST(ExtendedPath, PrefixesEachKindOfAbsolutePath) {
  EXPECT_EQ(ExtendedPath(LR"(d:\Temp)"), LR"(\\?\d:\Temp)");
  EXPECT_EQ(ExtendedPath(LR"(\\server\share\a)"), LR"(\\?\UNC\server\share\a)");
  for (const wchar_t* verbatim : {LR"(\\?\C:\dots.)", LR"(\\?\UNC\server\share)", LR"(\\.\C:\a)"})
    EXPECT_EQ(ExtendedPath(verbatim), verbatim);
}
