#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "testing/fuzz_target.h"

int ReplayCorpus(const char* source_file, const char* name, void (*target)(std::string_view)) {
  const auto folder =
      std::filesystem::path(source_file).parent_path() / "testdata" / (std::string("fuzz_") + name);
  std::error_code missing;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    target(bytes);
    ++count;
  }
  return count;
}
