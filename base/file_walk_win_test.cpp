#include "base/file_walk_win.h"

#include <set>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/text.h"
#include "testing/import_hook_win.h"
#include "testing/temp_folder_win.h"

namespace {

std::vector<std::wstring> Names(const std::wstring& folder) {
  std::vector<std::wstring> names;
  FolderListing listing(folder);
  while (const WIN32_FIND_DATAW* entry = listing.Next()) names.emplace_back(entry->cFileName);
  return names;
}

std::wstring Extended(const std::wstring& path) {
  return LR"(\\?\)" + path;
}

bool IsNamed(std::wstring_view path, std::wstring_view prefix) {
  return path.substr(path.rfind(L'\\') + 1).starts_with(prefix);
}

// What NTFS has and Wine's file system lacks. An entry named "link..." is listed as a link: its target
// would be what is in it. A folder named "read-only..." does not go at the first time.
BOOL WINAPI FindNextMarked(HANDLE find, WIN32_FIND_DATAW* entry) {
  if (!ImportHook<FindNextMarked>::system(find, entry)) return FALSE;
  if (IsNamed(entry->cFileName, L"read-only")) entry->dwFileAttributes |= FILE_ATTRIBUTE_READONLY;
  if (!IsNamed(entry->cFileName, L"link")) return TRUE;
  entry->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  entry->nFileSizeHigh = entry->nFileSizeLow = 0;
  return TRUE;
}

BOOL WINAPI RefuseReadOnly(const wchar_t* path) {
  static std::set<std::wstring> refused;
  if (!IsNamed(path, L"read-only") || !refused.insert(path).second)
    return ImportHook<RefuseReadOnly>::system(path);
  SetLastError(ERROR_ACCESS_DENIED);
  return FALSE;
}

// The folder has become a link since it was listed.
BOOL WINAPI InformationOfLink(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* information, DWORD size) {
  if (!ImportHook<InformationOfLink>::system(file, kind, information, size)) return FALSE;
  if (kind == FileBasicInfo)
    static_cast<FILE_BASIC_INFO*>(information)->FileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  return TRUE;
}

}  // namespace

TEST(FileWalk, TakesALinkAwayAndNeverFollowsIt) {
  const TempFolder cleaned;
  PutFile(cleaned.path + L"\\a\\link to a folder\\deep\\canary", 1000);
  PutFile(cleaned.path + L"\\a\\link to a file", 20);
  std::filesystem::create_directories(cleaned.path + L"\\a\\b\\link, broken");
  PutFile(cleaned.path + L"\\a\\z\\after", 4);
  const ImportHook<FindNextMarked> find_next("FindNextFileW");
  EXPECT_EQ(DirectorySize(cleaned.path), 4u);
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(Names(cleaned.path + L"\\a"), std::vector<std::wstring>{L"link to a folder"});
  EXPECT_TRUE(Exists(cleaned.path + L"\\a\\link to a folder\\deep\\canary")) << "behind the link";
}

TEST(FileWalk, DoesNotEnterAFolderThatBecameALinkAfterItWasListed) {
  const TempFolder cleaned;
  PutFile(cleaned.path + L"\\folder\\canary", 1000);
  {
    const ImportHook<InformationOfLink> information("GetFileInformationByHandleEx");
    ClearDirectoryContents(cleaned.path);
  }
  EXPECT_TRUE(Exists(cleaned.path + L"\\folder\\canary"));
  ClearDirectoryContents(cleaned.path);
  EXPECT_FALSE(Exists(cleaned.path + L"\\folder"));
}

TEST(FileWalk, DeletesWhatIsMarkedReadOnlyAndLeavesAFileInUseAsItWas) {
  const TempFolder cleaned;
  for (const wchar_t* path : {L"\\file", L"\\read-only\\inner\\file", L"\\read-only 2\\locked"}) {
    PutFile(cleaned.path + path, 1);
    SetFileAttributesW((cleaned.path + path).c_str(), FILE_ATTRIBUTE_READONLY);
    ASSERT_FALSE(DeleteFileW((cleaned.path + path).c_str()));
  }
  const std::wstring locked = cleaned.path + L"\\read-only 2\\locked";
  {
    const ImportHook<FindNextMarked> find_next("FindNextFileW");
    const ImportHook<RefuseReadOnly> remove("RemoveDirectoryW");
    const FileHandle in_use(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(in_use);
    ClearDirectoryContents(cleaned.path);
  }
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{L"read-only 2"});
  EXPECT_NE(GetFileAttributesW(locked.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(FileWalk, TakesNamesLiterallyHoweverLongThePath) {
  const TempFolder cleaned;
  const auto put = [](const std::wstring& path, DWORD size_bytes) {
    const FileHandle file(
        CreateFileW(Extended(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file.get(), std::string(size_bytes, 'x').data(), size_bytes, &written, nullptr));
  };
  std::wstring folder = cleaned.path;
  for (int i = 0; i < 40; ++i) CreateDirectoryW(Extended(folder += L"\\Žluťoučký kůň").c_str(), nullptr);
  ASSERT_GT(folder.size(), 500u);
  put(folder + L"\\ďábelské ódy.log", 7);
  CreateDirectoryW(Extended(cleaned.path + L"\\dots..").c_str(), nullptr);
  put(cleaned.path + L"\\dots..\\blank ", 20);
  put(cleaned.path + L"\\dot.", 300);
  put(cleaned.path + L"\\nul", 4000);
  EXPECT_EQ(DirectorySize(cleaned.path), 4327u);
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
}

TEST(FileWalk, NamesOfTheFolderItself) {
  const TempFolder cleaned;
  const std::wstring name = cleaned.path.substr(cleaned.path.rfind(L'\\') + 1);
  std::wstring slashes = cleaned.path;
  for (wchar_t& unit : slashes) unit = unit == L'\\' ? L'/' : unit;
  std::filesystem::current_path(std::filesystem::path(cleaned.path).parent_path());
  for (const std::wstring& path :
       {cleaned.path, cleaned.path + L"\\", slashes + L"/", Extended(cleaned.path), name}) {
    PutFile(cleaned.path + L"\\a\\file", 5);
    EXPECT_EQ(DirectorySize(path), 5u) << WideToUtf8(path);
    ClearDirectoryContents(path);
    EXPECT_EQ(DirectorySize(cleaned.path), 0u) << WideToUtf8(path);
  }
}

TEST(FileWalk, AFolderThatIsNoneIsEmptyAndNothingHappens) {
  const TempFolder place;
  PutFile(place.path + L"\\file", 5);
  std::filesystem::current_path(place.path);
  for (const std::wstring& path : {std::wstring(), place.path + L"\\missing", place.path + L"\\file"}) {
    EXPECT_EQ(DirectorySize(path), 0u) << WideToUtf8(path);
    ClearDirectoryContents(path);
    EXPECT_TRUE(Exists(place.path + L"\\file")) << WideToUtf8(path);
  }
  std::filesystem::current_path(std::filesystem::temp_directory_path());
}

TEST(FileWalk, SurvivesFoldersThatVanishUnderIt) {
  const TempFolder cleaned;
  for (int i = 0; i < 500; ++i)
    PutFile(cleaned.path + L"\\" + std::to_wstring(i / 5) + L"\\" + std::to_wstring(i), 1);
  std::thread other([&] { ClearDirectoryContents(cleaned.path); });
  for (int i = 0; i < 30; ++i) EXPECT_LE(DirectorySize(cleaned.path), 500u);
  other.join();
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
}
