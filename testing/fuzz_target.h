#pragma once

#include <cstddef>
#include <cstdint>

// FUZZ_TARGET(name, bytes) { ... } is the body of one fuzz target; `bytes` is a std::string_view of the
// hostile input. In a fuzz build, it is libFuzzer's entry point. In a test build, it is a test that replays
// every file of <folder>/testdata/fuzz_<name>/ .
#include <string_view>

#ifdef VARNEL_FUZZ_BUILD
#define FUZZ_TARGET(name, bytes)                                            \
  static void Fuzz_##name(std::string_view bytes);                          \
  extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) { \
    Fuzz_##name({reinterpret_cast<const char*>(data), size});               \
    return 0;                                                               \
  }                                                                         \
  static void Fuzz_##name(std::string_view bytes)
#else
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

// Calls `target` with each stored input beside the source file. Returns the number of inputs.
inline int ReplayCorpus(const char* source_file, const char* name, void (*target)(std::string_view)) {
  const std::filesystem::path folder = std::filesystem::path(source_file).parent_path() / "testdata";
  std::error_code missing;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder / name, missing)) {
    std::ifstream file(entry.path(), std::ios::binary);
    target(std::string{std::istreambuf_iterator<char>(file), {}});
    ++count;
  }
  return count;
}

#define FUZZ_TARGET(name, bytes)                                      \
  static void Fuzz_##name(std::string_view bytes);                    \
  TEST(FuzzCorpus, name) {                                            \
    EXPECT_GT(ReplayCorpus(__FILE__, "fuzz_" #name, Fuzz_##name), 0); \
  }                                                                   \
  static void Fuzz_##name(std::string_view bytes)
#endif
