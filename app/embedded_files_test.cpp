#include "app/embedded_files.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

TEST(FindEmbeddedFile, ComparesWhatFollowsTheHostExactly) {
  const std::pair<std::wstring_view, int> cases[] = {
      {L"https://varnel.local/", 101},
      {L"https://varnel.local/css/style.css", 102},
      {L"https://varnel.local/js/app.js?v=1", 0},
      {L"https://varnel.local", 0},
      {L"https://elsewhere/index.html", 0},
      {L"https://elsewhere/?varnel.local/app.png", 104},
      {L"https://varnel.local/varnel.local/app.png", 0},
  };
  for (const auto& [uri, want] : cases) {
    const EmbeddedFile* file = FindEmbeddedFile(uri);
    EXPECT_EQ(file ? file->resource_id : 0, want) << std::string(uri.begin(), uri.end());
  }
}
