#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <iterator>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "base/registry_win.h"
#include "base/text.h"
#include "base/utf8.h"
#include "base/worker.h"
#include "testing/registry_sandbox_win.h"

TEST(Text, ConvertsBothWaysAndReplacesInvalidText) {
  EXPECT_EQ(Utf8ToWide("Žluť 😀"), L"Žluť 😀");
  EXPECT_EQ(WideToUtf8(L"Žluť 😀"), "Žluť 😀");
  EXPECT_EQ(WideToUtf8(std::wstring{L'a', wchar_t{0xD800}, L'b'}),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_NE(Utf8ToWide("a\xFF").find(L'\xFFFD'), std::wstring::npos);
}

TEST(Text, ConsoleTextIsAlwaysValidUtf8) {
  EXPECT_EQ(ConsoleTextToUtf8("Příkaz"), "Příkaz");
  std::string every_byte;
  for (int value = 255; value >= 0; --value) every_byte += static_cast<char>(value);
  const std::string converted = ConsoleTextToUtf8(every_byte);
  EXPECT_TRUE(IsValidUtf8(converted));
  EXPECT_NE(converted.find("fedcba"), std::string::npos) << "ASCII is the same in every OEM code page";
}

TEST(ReadRegistryString, ReadsUpToTheBufferAndFallsBack) {
  const RegistrySandbox registry;
  const wchar_t* path = L"Software\\Some key";
  auto read = [&](const std::wstring& text, bool with_nul = true) {
    SetRegistryText(HKEY_LOCAL_MACHINE, path, L"text", text, with_nul);
    return ReadRegistryString(HKEY_LOCAL_MACHINE, path, L"text");
  };
  EXPECT_EQ(read(std::wstring(L"  Žluť\0tail", 11)), L"  Žluť");
  const std::wstring full(511, L'x');
  EXPECT_EQ(read(full), full);
  EXPECT_EQ(read(full + L"y", false), full + L"y");
  EXPECT_EQ(read(full + L"y"), L"Unknown");
  EXPECT_EQ(ReadRegistryString(HKEY_LOCAL_MACHINE, path, L"absent"), L"Unknown");
  EXPECT_EQ(ReadRegistryString(HKEY_LOCAL_MACHINE, L"Software\\No such key", L"text"), L"Unknown");
}

TEST(StartWorker, RunsOnAnotherThreadAndContainsExceptions) {
  std::promise<DWORD> thread_id;
  StartWorker([&] {
    thread_id.set_value(GetCurrentThreadId());
    throw std::runtime_error("contained");
  });
  EXPECT_NE(thread_id.get_future().get(), GetCurrentThreadId());
  StartWorker([] { throw 7; });
  Sleep(50);  // an escaped exception would have ended this process
}

// Threads wait at their start and at their end while a library loads.
TEST(StartWorker, RunsEachBodyExactlyOnce) {
  static std::array<std::atomic<int>, 2000> runs;  // outlives a late worker
  const auto ran_once = [] {
    return std::ranges::count_if(runs, [](const auto& count) { return count == 1; });
  };
  std::atomic<bool> done = false;
  std::thread loader([&] {
    while (!done)
      if (const HMODULE library = LoadLibraryW(L"d3d9.dll")) FreeLibrary(library);
  });
  for (std::atomic<int>& count : runs) {
    count = 0;
    StartWorker([&count] { ++count; });
  }
  for (int i = 0; i < 200 && ran_once() < std::ssize(runs); ++i) Sleep(50);
  done = true;
  loader.join();
  EXPECT_EQ(ran_once(), std::ssize(runs));
}
