#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

// Creates an empty folder in the user's temporary folder and deletes it with its contents at the end.
class TempFolder {
 public:
  TempFolder() {
    static int count = 0;
    path = (std::filesystem::temp_directory_path() / L"varnel_test_").wstring() +
           std::to_wstring(GetTickCount64()) + L"_" + std::to_wstring(++count);
    std::filesystem::create_directories(path);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::wstring path;
};

// Writes a file of the given size. Creates its folder if missing.
inline void PutFile(const std::filesystem::path& path, size_t size_bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << std::string(size_bytes, 'x');
}

inline bool Exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Returns true under Wine. Code that empties fixed system folders must never do so on a real Windows.
inline bool IsWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
