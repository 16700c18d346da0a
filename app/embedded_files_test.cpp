#include "app/embedded_files.h"

#include <gtest/gtest.h>

#include <string>

TEST(FindEmbeddedFile, ComparesWhatFollowsTheHostExactly) {
  const struct {
    std::wstring_view uri;
    int want;  // 0: not embedded
    std::wstring_view content_type;
  } cases[] = {
      {L"https://varnel.local/", 101, L"text/html; charset=utf-8"},
      {L"https://varnel.local/index.html", 101, L"text/html; charset=utf-8"},
      {L"https://varnel.local/css/style.css", 102, L"text/css; charset=utf-8"},
      {L"https://varnel.local/js/app.js", 103, L"application/javascript; charset=utf-8"},
      {L"https://varnel.local/app.png", 104, L"image/png"},
      {L"https://varnel.local/app.ico", 105, L"image/x-icon"},
      {L"https://varnel.local/js/app.js?v=1", 0, L""},
      {L"https://varnel.local/index.html#top", 0, L""},
      {L"https://varnel.local/Index.html", 0, L""},
      {L"https://varnel.local", 0, L""},
      {L"https://varnel.local/css/", 0, L""},
      {L"https://elsewhere/index.html", 0, L""},
      {L"https://elsewhere/?varnel.local/app.png", 104, L"image/png"},
      {L"https://varnel.local/varnel.local/app.png", 0, L""},
  };
  for (const auto& c : cases) {
    const EmbeddedFile* file = FindEmbeddedFile(c.uri);
    EXPECT_EQ(file ? file->resource_id : 0, c.want) << std::string(c.uri.begin(), c.uri.end());
    EXPECT_EQ(file ? file->content_type : L"", c.content_type);
  }
}
