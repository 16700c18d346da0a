#include "base/file_walk_win.h"

#include <cstdlib>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/text.h"
#include "testing/directory_link_win.h"
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

void PutLiteral(const std::wstring& path, DWORD size_bytes) {
  const FileHandle file(
      CreateFileW(Extended(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  ASSERT_TRUE(file) << GetLastError();
  DWORD written = 0;
  WriteFile(file.get(), std::string(size_bytes, 'x').data(), size_bytes, &written, nullptr);
}

// Wine cannot delete a link to a folder, so only the link's target is checked there.
TEST(FileWalk, LeavesTheTargetOfALinkAlone) {
  const TempFolder cleaned, elsewhere;
  PutFile(elsewhere.path + L"\\deep\\canary", 1000);
  PutFile(cleaned.path + L"\\a\\file", 5);
  PutFile(cleaned.path + L"\\z\\file", 7);
  for (const wchar_t* link : {L"\\link", L"\\a\\link"})
    ASSERT_TRUE(MakeDirectoryLink(cleaned.path + link, elsewhere.path));
  EXPECT_EQ(DirectorySize(cleaned.path), 12u);
  EXPECT_EQ(DirectorySize(cleaned.path + L"\\a", PathLinks::kFollow, 0), 0u) << "no time for any file";
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(DirectorySize(cleaned.path), 0u);
  EXPECT_FALSE(Exists(cleaned.path + L"\\z"));
  EXPECT_EQ(Exists(cleaned.path + L"\\a\\link"), IsWine());
  EXPECT_EQ(DirectorySize(elsewhere.path), 1000u);
}

TEST(FileWalk, FollowsALinkInThePathOnlyIfAskedTo) {
  const TempFolder place, target;
  PutFile(target.path + L"\\a\\file", 5);
  const std::wstring link = place.path + L"\\link";
  ASSERT_TRUE(MakeDirectoryLink(link, target.path));
  for (const std::wstring& path : {link, link + L"\\a"}) {
    EXPECT_EQ(DirectorySize(path, PathLinks::kRefuse), 0u) << WideToUtf8(path);
    ClearDirectoryContents(path, PathLinks::kRefuse);
    EXPECT_FALSE(RemoveFolder(path)) << WideToUtf8(path);
    EXPECT_EQ(DirectorySize(path), 5u) << WideToUtf8(path);
  }
  ClearDirectoryContents(link);
  EXPECT_EQ(Names(target.path), std::vector<std::wstring>{});
  EXPECT_TRUE(Exists(link));
}

// Swaps a folder for a link and back as fast as possible. VARNEL_RACE_SECONDS extends the test. Wine
// deletes a file of an open folder by its path, through a link put there in between. So there, the files
// behind the link have names of their own, which only a walk that follows the link can learn.
TEST(FileWalk, DoesNotFollowAFolderThatBecomesALink) {
  const TempFolder cleaned, elsewhere, aside;
  const std::wstring victim = cleaned.path + L"\\victim", moved = aside.path + L"\\moved",
                     link = aside.path + L"\\link";
  constexpr const wchar_t* kFiles[] = {L"\\canary", L"\\deep\\canary"};
  const std::wstring behind = IsWine() ? L".behind" : L"";
  for (const wchar_t* file : kFiles) PutFile(elsewhere.path + file + behind, 1);
  ASSERT_TRUE(MakeDirectoryLink(link, elsewhere.path));
  const char* seconds = std::getenv("VARNEL_RACE_SECONDS");
  const ULONGLONG end = GetTickCount64() + 1000 * (seconds ? std::stoul(seconds) : 2);
  int emptied = 0, led = 0;
  {
    const FolderSwapper swapper(victim, moved, link);
    while (GetTickCount64() < end) {
      std::error_code ignored;
      std::filesystem::create_directories(moved + L"\\deep", ignored);
      for (const wchar_t* file : kFiles) std::ofstream(std::filesystem::path(moved + file)) << 'x';
      for (int i = 0; i < 20; ++i) {
        led += (GetFileAttributesW(victim.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        ClearDirectoryContents(cleaned.path);
        DirectorySize(cleaned.path);
      }
      emptied += !Exists(moved + kFiles[0]);
    }
  }
  EXPECT_GT(emptied, 2) << "the folder was met as such";
  EXPECT_GT(led, 2) << "the link was met";
  for (const wchar_t* file : kFiles) EXPECT_TRUE(Exists(elsewhere.path + file + behind)) << WideToUtf8(file);
}

TEST(FileWalk, DeletesReadOnlyEntriesAndLeavesThoseInUseUnchanged) {
  const TempFolder cleaned;
  const std::wstring locked = cleaned.path + L"\\a\\b\\locked";
  for (const wchar_t* file : {L"\\a\\b\\locked", L"\\a\\b\\free", L"\\a\\z\\free", L"\\file"}) {
    PutFile(cleaned.path + file, 10);
    SetFileAttributesW((cleaned.path + file).c_str(), FILE_ATTRIBUTE_READONLY);
  }
  {
    const FileHandle in_use(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(in_use);
    ClearDirectoryContents(cleaned.path);
    EXPECT_FALSE(RemoveFolder(cleaned.path + L"\\a"));
  }
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{L"a"});
  EXPECT_EQ(Names(cleaned.path + L"\\a"), std::vector<std::wstring>{L"b"});
  EXPECT_EQ(DirectorySize(cleaned.path), 10u);
  EXPECT_NE(GetFileAttributesW(locked.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
  EXPECT_TRUE(RemoveFolder(cleaned.path + L"\\a\\"));
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
  EXPECT_TRUE(RemoveFolder(cleaned.path + L"\\a")) << "gone already";
}

TEST(FileWalk, LeavesAFolderInUseWithAllThatIsInIt) {
  const TempFolder cleaned;
  const std::wstring used = cleaned.path + L"\\a\\used";
  for (const wchar_t* file : {L"\\deep\\file", L"\\file"}) PutFile(used + file, 10);
  PutFile(cleaned.path + L"\\a\\free", 10);
  std::filesystem::current_path(used);
  ClearDirectoryContents(cleaned.path);
  EXPECT_FALSE(RemoveFolder(cleaned.path + L"\\a"));
  EXPECT_EQ(Names(cleaned.path + L"\\a"), std::vector<std::wstring>{L"used"});
  EXPECT_EQ(DirectorySize(used), 20u);
  ClearDirectoryContents(used);
  EXPECT_EQ(Names(used), std::vector<std::wstring>{}) << "emptied if it is the folder given";
  std::filesystem::current_path(std::filesystem::temp_directory_path());
}

TEST(FileWalk, TakesNamesLiterallyInPathsOfAnyLength) {
  const TempFolder cleaned;
  std::wstring folder = cleaned.path;
  for (int i = 0; i < 40; ++i) CreateDirectoryW(Extended(folder += L"\\Žluťoučký kůň").c_str(), nullptr);
  ASSERT_GT(folder.size(), 500u);
  PutLiteral(folder + L"\\ďábelské ódy.log", 7);
  CreateDirectoryW(Extended(cleaned.path + L"\\dots..").c_str(), nullptr);
  PutLiteral(cleaned.path + L"\\dots..\\blank ", 20);
  PutLiteral(cleaned.path + L"\\dot.", 300);
  PutLiteral(cleaned.path + L"\\nul", 4000);
  EXPECT_EQ(DirectorySize(cleaned.path), 4327u);
  EXPECT_EQ(DirectorySize(folder), 7u);
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
}

TEST(FileWalk, AcceptsEveryFormOfTheFolder) {
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
  PutFile(cleaned.path + L"\\file", 5);
  std::filesystem::current_path(cleaned.path);
  for (const std::wstring& path : {std::wstring(), cleaned.path + L"\\missing", cleaned.path + L"\\file"}) {
    EXPECT_EQ(DirectorySize(path), 0u) << WideToUtf8(path);
    ClearDirectoryContents(path);
    EXPECT_TRUE(Exists(cleaned.path + L"\\file")) << WideToUtf8(path);
  }
  std::filesystem::current_path(std::filesystem::temp_directory_path());
}

TEST(FileWalk, SurvivesFoldersThatVanishDuringTheWalk) {
  const TempFolder cleaned;
  for (int i = 0; i < 500; ++i)
    PutFile(cleaned.path + L"\\" + std::to_wstring(i / 5) + L"\\" + std::to_wstring(i), 1);
  std::thread other([&] { ClearDirectoryContents(cleaned.path); });
  for (int i = 0; i < 30; ++i) EXPECT_LE(DirectorySize(cleaned.path), 500u);
  other.join();
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
}

}  // namespace
