#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

#include "base/handle_win.h"

// During its lifetime, HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE are two empty keys for this process
// (RegOverridePredefKey), so a test touches nobody's registry. One object at a time.
class RegistrySandbox {
 public:
  RegistrySandbox() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kPath);
    Make(L"User", user_);
    Make(L"Machine", machine_);
    if (RegOverridePredefKey(HKEY_CURRENT_USER, user_.get()) != ERROR_SUCCESS ||
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine_.get()) != ERROR_SUCCESS)
      throw std::runtime_error("no registry of the test's own");
  }
  ~RegistrySandbox() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, kPath);
  }
  RegistrySandbox(const RegistrySandbox&) = delete;
  RegistrySandbox& operator=(const RegistrySandbox&) = delete;

 private:
  static constexpr const wchar_t* kPath = L"Software\\VarnelTest";

  static void Make(const wchar_t* name, RegistryKey& key) {
    RegCreateKeyExW(HKEY_CURRENT_USER, (std::wstring(kPath) + L"\\" + name).c_str(), 0, nullptr, 0,
                    KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
  }

  RegistryKey user_, machine_;
};

// Stores a text, with or without its NUL. Creates the key if it is missing.
inline void SetRegistryText(HKEY hive, const wchar_t* path, const wchar_t* name, std::wstring text,
                            bool with_nul = true) {
  const size_t units = text.size() + (with_nul ? 1 : 0);
  if (!with_nul) text += L'x';  // the system includes a NUL that happens to follow the text
  if (RegSetKeyValueW(hive, path, name, REG_SZ, text.c_str(), static_cast<DWORD>(units * sizeof(wchar_t))) !=
      ERROR_SUCCESS)
    throw std::runtime_error("the registry refuses a value");
}
