#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// Returns the text of testing/messages/<name>.json without its line end. The host's tests assert that
// they produce exactly this message, and the page's tests that they understand it, so the two cannot
// drift apart.
inline std::string RecordedMessage(const std::string& name) {
  const auto folder = std::filesystem::path(__FILE__).parent_path() / "messages";
  std::ifstream file(folder / (name + ".json"), std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  while (text.ends_with('\n')) text.pop_back();
  return text;
}
