#include "base/file_walk_win.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/text.h"
#include "testing/directory_link_win.h"
#include "testing/stand_ins/ntfs_win.h"
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

}  // namespace

TEST(FileWalk, NeverFollowsALinkThatItMeets) {
  struct {
    const char* name;
    DWORD tag;  // 0: of a file
    const wchar_t* target;
  } links[] = {{"junction", IO_REPARSE_TAG_MOUNT_POINT, L""},
               {"folder link", IO_REPARSE_TAG_SYMLINK, L""},
               {"broken junction", IO_REPARSE_TAG_MOUNT_POINT, L"\\nothing"},
               {"file link", 0, L"\\canary"},
               {"broken file link", 0, L"\\nothing"}};
  for (const auto& link : links) {
    for (const wchar_t* place : {L"", L"\\a\\b\\c"}) {
      SCOPED_TRACE(testing::Message() << link.name << " in \"" << WideToUtf8(place) << "\"");
      const TempFolder cleaned, elsewhere;
      PutFile(elsewhere.path + L"\\canary", 1000);
      PutFile(elsewhere.path + L"\\deep\\canary", 1000);
      PutFile(cleaned.path + place + L"\\before", 3);
      PutFile(cleaned.path + place + L"\\zzz\\after", 4);
      StandInNtfs ntfs;
      const std::wstring path = cleaned.path + place + L"\\link", target = elsewhere.path + link.target;
      link.tag == 0 ? ntfs.AddFileLink(path, target) : ntfs.AddFolderLink(path, target, link.tag);

      EXPECT_EQ(DirectorySize(cleaned.path), 7u);
      ClearDirectoryContents(cleaned.path);
      EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
      EXPECT_EQ(DirectorySize(elsewhere.path), 2000u) << "the canaries";
    }
  }
}

// The same with a link that the system itself knows. Wine cannot delete it, so only its target is looked at.
TEST(FileWalk, LeavesTheTargetOfARealLinkAlone) {
  const TempFolder cleaned, elsewhere;
  PutFile(elsewhere.path + L"\\deep\\canary", 1000);
  PutFile(cleaned.path + L"\\a\\file", 5);
  ASSERT_TRUE(MakeDirectoryLink(cleaned.path + L"\\link", elsewhere.path));
  ASSERT_TRUE(MakeDirectoryLink(cleaned.path + L"\\a\\link", elsewhere.path));
  EXPECT_EQ(DirectorySize(cleaned.path), 5u);
  ClearDirectoryContents(cleaned.path);
  EXPECT_FALSE(Exists(cleaned.path + L"\\a\\file"));
  EXPECT_EQ(DirectorySize(elsewhere.path), 1000u);
}

TEST(FileWalk, EmptiesAFolderThatIsItselfALink) {
  const TempFolder place, target;
  PutFile(target.path + L"\\a\\file", 5);
  StandInNtfs ntfs;
  ntfs.AddFolderLink(place.path + L"\\temp", target.path, IO_REPARSE_TAG_MOUNT_POINT);
  EXPECT_EQ(DirectorySize(place.path + L"\\temp"), 5u);
  ClearDirectoryContents(place.path + L"\\temp");
  EXPECT_TRUE(std::filesystem::is_empty(target.path));
  EXPECT_EQ(Names(place.path), std::vector<std::wstring>{L"temp"});
}

TEST(FileWalk, DoesNotEnterAFolderThatBecameALinkAfterItWasListed) {
  const TempFolder cleaned, elsewhere;
  PutFile(elsewhere.path + L"\\canary", 1000);
  PutFile(cleaned.path + L"\\folder\\file", 1);
  StandInNtfs ntfs;
  ntfs.SwapForJunction(cleaned.path + L"\\folder", elsewhere.path);
  ClearDirectoryContents(cleaned.path);
  EXPECT_TRUE(Exists(elsewhere.path + L"\\canary"));
}

TEST(FileWalk, DeletesWhatIsMarkedReadOnly) {
  const TempFolder cleaned;
  PutFile(cleaned.path + L"\\file", 1);
  PutFile(cleaned.path + L"\\empty folder\\x", 1);
  PutFile(cleaned.path + L"\\folder\\inner\\file", 1);
  DeleteFileW((cleaned.path + L"\\empty folder\\x").c_str());
  StandInNtfs ntfs;
  for (const wchar_t* path :
       {L"\\file", L"\\empty folder", L"\\folder", L"\\folder\\inner", L"\\folder\\inner\\file"})
    SetFileAttributesW((cleaned.path + path).c_str(), FILE_ATTRIBUTE_READONLY);
  ASSERT_FALSE(DeleteFileW((cleaned.path + L"\\file").c_str()));
  ASSERT_FALSE(RemoveDirectoryW((cleaned.path + L"\\empty folder").c_str()));
  ClearDirectoryContents(cleaned.path);
  EXPECT_EQ(Names(cleaned.path), std::vector<std::wstring>{});
}

TEST(FileWalk, LeavesAFileInUseAsItWas) {
  const TempFolder cleaned;
  const std::wstring locked = cleaned.path + L"\\a\\b\\locked";
  PutFile(locked, 10);
  PutFile(cleaned.path + L"\\a\\b\\free", 1);
  PutFile(cleaned.path + L"\\a\\z\\free", 1);
  const StandInNtfs ntfs;
  for (const std::wstring& path : {locked, cleaned.path + L"\\a\\b"})
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
  {
    const FileHandle in_use(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(in_use);
    ClearDirectoryContents(cleaned.path);
  }
  EXPECT_EQ(DirectorySize(cleaned.path), 10u);
  EXPECT_EQ(Names(cleaned.path + L"\\a"), std::vector<std::wstring>{L"b"});
  for (const wchar_t* folder : {L"\\a", L"\\a\\b"})
    EXPECT_NE(FolderListing(cleaned.path + folder).Next()->dwFileAttributes & FILE_ATTRIBUTE_READONLY, 0u);
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(FileWalk, TakesNamesLiterallyHoweverLongThePath) {
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
