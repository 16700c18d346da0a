#include <gtest/gtest.h>
#include <windows.h>

#include <future>
#include <stdexcept>

#include "base/exe_directory_win.h"
#include "base/handle_win.h"
#include "base/registry_win.h"
#include "base/text.h"
#include "base/utf8.h"
#include "base/worker_win.h"

TEST(Text, ConvertsBothWaysAndReplacesWhatCannotBe) {
  EXPECT_EQ(Utf8ToWide("Žluť 😀"), L"Žluť 😀");
  EXPECT_EQ(WideToUtf8(L"Žluť 😀"), "Žluť 😀");
  EXPECT_EQ(Utf8ToWide(""), L"");
  EXPECT_EQ(WideToUtf8(L""), "");
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
  const wchar_t* path = L"Software\\VarnelTest";
  RegistryKey key;
  ASSERT_EQ(
      RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr),
      0);
  auto set = [&](const wchar_t* name, const std::wstring& data) {
    RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()),
                   static_cast<DWORD>(data.size() * sizeof(wchar_t)));
  };
  set(L"text", std::wstring(L"  Žluť\0tail", 11));
  set(L"full", std::wstring(511, L'x'));
  set(L"long", std::wstring(512, L'x'));
  EXPECT_EQ(ReadRegistryString(HKEY_CURRENT_USER, path, L"text"), L"  Žluť");
  EXPECT_EQ(ReadRegistryString(HKEY_CURRENT_USER, path, L"full"), std::wstring(511, L'x'));
  EXPECT_EQ(ReadRegistryString(HKEY_CURRENT_USER, path, L"long"), L"Unknown");
  EXPECT_EQ(ReadRegistryString(HKEY_CURRENT_USER, path, L"absent"), L"Unknown");
  EXPECT_EQ(ReadRegistryString(HKEY_CURRENT_USER, L"Software\\VarnelNoSuchKey", L"text"), L"Unknown");
  RegDeleteTreeW(HKEY_CURRENT_USER, path);
}

TEST(GetExeDirectory, IsTheFolderOfTheRunningExecutable) {
  const std::wstring folder = GetExeDirectory();
  EXPECT_NE(GetFileAttributesW((folder + L"\\windows_tests.exe").c_str()), INVALID_FILE_ATTRIBUTES);
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

TEST(OwnedHandle, ClosesExactlyOnce) {
  HANDLE raw = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  DWORD flags = 0;
  {
    KernelHandle first(raw);
    KernelHandle second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(second.get(), raw);
    EXPECT_TRUE(GetHandleInformation(raw, &flags));
  }
  EXPECT_FALSE(GetHandleInformation(raw, &flags));
}
