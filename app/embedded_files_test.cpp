#include "app/embedded_files.h"

#include <gtest/gtest.h>

TEST(FindEmbeddedFile, ComparesThePathExactly) {
  const auto id = [](const wchar_t* uri) {
    const EmbeddedFile* file = FindEmbeddedFile(uri);
    return file ? file->resource_id : 0;
  };
  EXPECT_EQ(id(L"https://varnel.local/css/style.css"), 102);
  EXPECT_EQ(id(L"https://varnel.local/js/app.js?v=1"), 0);
  EXPECT_EQ(id(L"https://elsewhere/?varnel.local/app.png"), 104);
  EXPECT_EQ(id(L"https://varnel.local/varnel.local/app.png"), 0);
}
