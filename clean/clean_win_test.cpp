#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <shlobj.h>

#include <optional>
#include <string>
#include <vector>

#include "base/file_walk_win.h"
#include "base/text.h"
#include "clean/downloads_win.h"
#include "clean/junk_win.h"
#include "clean/system_files_win.h"
#include "testing/recording_page.h"
#include "testing/registry_sandbox_win.h"
#include "testing/service_action_win.h"
#include "testing/temp_folder_win.h"

using nlohmann::json;
using testing::ElementsAre;

namespace {

constexpr char kServiceNotice[] = R"({"type":"show_service_error_modal"})";

// An environment variable's text until the end of the test.
class EnvironmentText {
 public:
  EnvironmentText(const wchar_t* name, const wchar_t* text) : name_(name) {
    wchar_t buffer[1024] = {};
    if (GetEnvironmentVariableW(name, buffer, 1024) > 0) old_ = buffer;
    SetEnvironmentVariableW(name, text);
  }
  ~EnvironmentText() { SetEnvironmentVariableW(name_, old_ ? old_->c_str() : nullptr); }
  EnvironmentText(const EnvironmentText&) = delete;
  EnvironmentText& operator=(const EnvironmentText&) = delete;

 private:
  const wchar_t* name_;
  std::optional<std::wstring> old_;
};

std::wstring LocalAppData() {
  wchar_t path[MAX_PATH] = {};
  SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, path);
  return path;
}

FileHandle OpenWithoutSharing(const std::wstring& path) {
  return FileHandle(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
}

// Every folder of every category holds one file, each of another power of two, so that a sum tells which
// files are in it.
class Junk : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(IsWine()) << "this test empties system folders and must not run on a real machine";
    size_t size_bytes = 1;
    for (const std::wstring& folder : Folders()) {
      std::filesystem::create_directories(folder);
      ClearDirectoryContents(folder);
      PutFile(folder + L"\\a\\ž.tmp", size_bytes);
      size_bytes *= 2;
    }
    TakePostedTexts();
  }
  void TearDown() override {
    for (const std::wstring& folder : Folders()) ClearDirectoryContents(folder);
  }

  std::vector<std::wstring> Folders() const {
    return {LR"(C:\Windows\Temp)",
            LR"(C:\Windows\SystemTemp)",
            temp_.path,
            LR"(C:\Windows\Prefetch)",
            LR"(C:\Windows\SoftwareDistribution\Download)",
            LocalAppData() + LR"(\Google\Chrome\User Data\Default\Cache)",
            LocalAppData() + LR"(\Google\Chrome\User Data\Default\Code Cache)",
            LocalAppData() + LR"(\Microsoft\Edge\User Data\Default\Cache)",
            LocalAppData() + LR"(\Microsoft\Edge\User Data\Default\Code Cache)",
            LocalAppData() + LR"(\BraveSoftware\Brave-Browser\User Data\Default\Cache)",
            LocalAppData() + LR"(\Mozilla\Firefox\Profiles)",
            LocalAppData() + LR"(\NVIDIA\DXCache)",
            LocalAppData() + LR"(\NVIDIA\GLCache)",
            LocalAppData() + LR"(\D3DSCache)",
            LR"(C:\ProgramData\Microsoft\Windows\WER)",
            LR"(C:\Windows\Logs)",
            LR"(C:\Windows\Minidump)"};
  }

  TempFolder temp_;
  EnvironmentText tmp_{L"TMP", temp_.path.c_str()};
};

using Bytes = std::array<uint64_t, kJunkCategoryCount>;
constexpr Bytes kFull = {3, 4, 8, 16, 2016, 14336, 114688};
// What this program leaves alone: system services' temporary files, browser profiles, crash dumps.
constexpr Bytes kCleaned = {2, 0, 0, 0, 1024, 0, 65536};
constexpr JunkFlags kAll = {true, true, true, true, true, true, true};

}  // namespace

TEST_F(Junk, MeasuresEveryFolderOfTheTable) {
  EXPECT_EQ(MeasureJunkSizes().bytes, kFull);
  EXPECT_EQ(MeasureJunkSizes().Total(), 131071u);
}

TEST_F(Junk, CleansTheSelectedCategoriesAndKeepsTheFolders) {
  EXPECT_TRUE(CleanJunkCategories({}));
  EXPECT_EQ(MeasureJunkSizes().bytes, kFull);
  Bytes want = kFull;
  for (size_t i = 0; i < kJunkCategoryCount; ++i) {
    JunkFlags selected = {};
    selected[i] = true;
    EXPECT_TRUE(CleanJunkCategories(selected));
    want[i] = kCleaned[i];
    EXPECT_EQ(MeasureJunkSizes().bytes, want) << kJunkCategories[i].key;
  }
  for (const std::wstring& folder : Folders()) EXPECT_TRUE(Exists(folder)) << WideToUtf8(folder);
}

TEST_F(Junk, IgnoresMissingFolders) {
  for (const std::wstring& folder : Folders()) {
    ClearDirectoryContents(folder);
    RemoveDirectoryW(folder.c_str());
  }
  EXPECT_EQ(MeasureJunkSizes().Total(), 0u);
  EXPECT_TRUE(CleanJunkCategories(kAll));
}

// Without TMP and TEMP, GetTempPathW answers with the profile folder.
TEST_F(Junk, TheProfileIsNoTemporaryFolder) {
  const std::wstring profile_path = temp_.path + L"\\a";
  const EnvironmentText profile(L"USERPROFILE", profile_path.c_str());
  for (const wchar_t* text :
       {static_cast<const wchar_t*>(nullptr), L"", profile_path.c_str(), temp_.path.c_str()}) {
    const EnvironmentText tmp(L"TMP", text);
    const EnvironmentText temp(L"TEMP", text);
    EXPECT_EQ(MeasureJunkSizes().bytes[1], 0u);
    CleanJunkCategories(kAll);
    EXPECT_EQ(DirectorySize(temp_.path), 4u);
  }
}

TEST_F(Junk, GetJunkWithoutServiceTellsThePageAndAnswersWithLocalFigures) {
  getJunk(7);
  EXPECT_THAT(TakePostedTexts(), ElementsAre(kServiceNotice, BuildJunkReply("junk", 7, {kFull})));
}

TEST_F(Junk, GetJunkTakesTheServicesFiguresWhereTheyAreLarger) {
  const StandInService service(
      {{"getJunkSizes", Reply({{"success", true}, {"windowsTempBytes", 2}, {"prefetchBytes", 5000}})}});
  getJunk(7);
  EXPECT_THAT(service.requests(), ElementsAre("{\"action\":\"getJunkSizes\",\"data\":{}}\n"));
  EXPECT_THAT(TakePostedTexts(),
              ElementsAre(BuildJunkReply("junk", 7, {{3, 4, 5000, 16, 2016, 14336, 114688}})));
}

TEST_F(Junk, CleanJunkWithServiceDeletesNothingItself) {
  for (const ServiceAnswer& answer : {Reply({{"success", true}}), Reply({{"success", false}}),
                                      Reply({{"success", "x"}}), RawReply("[]\n"), RawReply("")}) {
    const StandInService service({{"cleanJunk", answer}});
    cleanJunk({{true, false, true, true, true, true, false}, 8});
    EXPECT_THAT(service.requests(),
                ElementsAre("{\"action\":\"cleanJunk\",\"data\":{\"browserCache\":true,\"prefetch\":true,"
                            "\"shaderCache\":true,\"systemLogs\":false,\"userTemp\":false,\"winUpdate\":true,"
                            "\"windowsTemp\":true}}\n"));
    EXPECT_THAT(TakePostedTexts(), ElementsAre(BuildJunkReply("cleanJunk", 8, {kFull})));
  }
}

TEST_F(Junk, CleanJunkWithoutServiceCleansHereAndStaysQuiet) {
  const std::wstring locked = temp_.path + L"\\a\\locked";
  PutFile(locked, 100);
  const FileHandle in_use = OpenWithoutSharing(locked);
  ASSERT_TRUE(in_use);
  cleanJunk({kAll, 8.5});
  Bytes want = kCleaned;
  want[1] = 100;
  EXPECT_THAT(TakePostedTexts(), ElementsAre(BuildJunkReply("cleanJunk", 8.5, {want})));
}

namespace {

// The Downloads folder of this user is a temporary one until the end of the test.
class Downloads : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(IsWine()) << "this test changes where the user's Downloads are";
    Redirect(folder_.path);
    TakePostedTexts();
  }
  void TearDown() override {
    RegistryKey key = Folders();
    if (old_.empty())
      RegDeleteValueW(key.get(), kValue);
    else
      Redirect(old_);
  }

  void Redirect(const std::wstring& path) {
    RegistryKey key = Folders();
    wchar_t buffer[MAX_PATH] = {};
    DWORD size_bytes = sizeof(buffer) - sizeof(wchar_t);
    if (!is_redirected_ && RegQueryValueExW(key.get(), kValue, nullptr, nullptr,
                                            reinterpret_cast<BYTE*>(buffer), &size_bytes) == 0)
      old_ = buffer;
    is_redirected_ = true;
    RegSetValueExW(key.get(), kValue, 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(path.c_str()),
                   static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
  }

  // Writes a file of the Downloads folder that was last written so many hours ago.
  void Put(const std::wstring& name, size_t size_bytes, int64_t hours_old) {
    const std::wstring path = folder_.path + L"\\" + name;
    PutFile(path, size_bytes);
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const uint64_t time = (uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime) -
                          static_cast<uint64_t>(hours_old * 36'000'000'000 + 600'000'000);
    const FILETIME written = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    const FileHandle file(
        CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &written));
  }

  static constexpr size_t kMiB = 1'048'576;
  static constexpr wchar_t kValue[] = L"{374DE290-123F-4565-9164-39C4925E467B}";
  TempFolder folder_;

 private:
  static RegistryKey Folders() {
    RegistryKey key;
    RegCreateKeyExW(HKEY_CURRENT_USER,
                    LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders)", 0, nullptr,
                    0, KEY_READ | KEY_WRITE, nullptr, key.put(), nullptr);
    return key;
  }
  std::wstring old_;
  bool is_redirected_ = false;
};

}  // namespace

TEST_F(Downloads, ListsOldLargeFilesOfTheFolderItself) {
  Put(L"Žluťoučký.ISO", 2 * kMiB, 31 * 24);
  Put(L"new.iso", 2 * kMiB, 29 * 24);
  Put(L"future.iso", 2 * kMiB, -24);
  Put(L"exact.zip", kMiB, 31 * 24);
  Put(L"above.zip", kMiB + 1, 60 * 24);
  Put(L"text.txt", 2 * kMiB, 31 * 24);
  Put(L"sub\\inner.zip", 2 * kMiB, 31 * 24);
  std::filesystem::create_directories(folder_.path + L"\\folder.zip");
  getDownloadsJunk(9);
  const std::vector<json> messages = TakePostedMessages();
  ASSERT_EQ(messages.size(), 1u);
  std::vector<std::string> found;
  for (const json& item : messages[0]["items"])
    found.push_back(item["path"].get<std::string>() + " " + item["size"].dump() + " " +
                    item["daysOld"].dump());
  const std::string folder = WideToUtf8(folder_.path);
  EXPECT_THAT(found, testing::UnorderedElementsAre(folder + "\\Žluťoučký.ISO 2097152 31",
                                                   folder + "\\above.zip 1048577 60"));
  EXPECT_EQ(messages[0]["count"], 2);
  EXPECT_EQ(messages[0]["totalBytes"], 3145729);
}

TEST_F(Downloads, LooksIntoTheProfileWhenTheShellKnowsNoFolder) {
  Redirect(folder_.path + L"\\missing");
  const EnvironmentText profile(L"USERPROFILE", folder_.path.c_str());
  Put(L"Downloads\\a.cab", 2 * kMiB, 800);
  getDownloadsJunk(9);
  EXPECT_EQ(TakePostedMessages().at(0)["count"], 1);

  for (const wchar_t* missing : {L"C:\\no such profile", static_cast<const wchar_t*>(nullptr)}) {
    const EnvironmentText none(L"USERPROFILE", missing);
    getDownloadsJunk(9);
    EXPECT_THAT(
        TakePostedTexts(),
        ElementsAre(
            R"({"count":0,"items":[],"requestId":9,"success":true,"totalBytes":0,"type":"getDownloadsJunk"})"));
  }
}

TEST_F(Downloads, RecyclesNothingByAnotherName) {
  Put(L"kept.zip", 20, 0);
  // Only by this form of its path can it be made, and deleted at the end.
  const std::wstring dotted = LR"(\\?\)" + folder_.path + L"\\kept.zip.";
  EXPECT_TRUE(FileHandle(CreateFileW(dotted.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr)));
  const std::string folder = WideToUtf8(folder_.path), file = folder + "\\kept.zip";
  deleteSpecificFiles(10, {file + ".", file + " ", folder + "\\.\\kept.zip", folder + "\\x\\..\\kept.zip",
                           "kept.zip", folder + "/kept.zip", file + std::string("\0x", 2), "C:", ""});
  EXPECT_TRUE(Exists(folder_.path + L"\\kept.zip"));
  EXPECT_TRUE(DeleteFileW(dotted.c_str()));
  EXPECT_THAT(
      TakePostedTexts(),
      ElementsAre(R"({"deletedCount":0,"requestId":10,"success":false,"type":"deleteSpecificFiles"})"));
}

TEST_F(Downloads, MovesFilesToTheRecycleBin) {
  const std::wstring name = L"varnel test " + std::to_wstring(GetTickCount64()) + L" ž.zip";
  Put(name, 20, 0);
  const std::string path = WideToUtf8(folder_.path + L"\\" + name);
  deleteSpecificFiles(10, {WideToUtf8(folder_.path) + "\\missing.zip", path, ""});
  EXPECT_FALSE(Exists(folder_.path + L"\\" + name));
  // Wine's Recycle Bin is the desktop's, in the home folder (\??\Z:\root).
  wchar_t home[MAX_PATH] = {};
  ASSERT_GT(GetEnvironmentVariableW(L"WINEHOMEDIR", home, MAX_PATH), 4u);
  const std::wstring bin = std::wstring(home + 4) + LR"(\.local\share\Trash\)";
  EXPECT_TRUE(DeleteFileW((bin + L"files\\" + name).c_str()));
  EXPECT_TRUE(DeleteFileW((bin + L"info\\" + name + L".trashinfo").c_str()));
  deleteSpecificFiles(11, {path});
  deleteSpecificFiles(12, {});
  EXPECT_THAT(
      TakePostedTexts(),
      ElementsAre(R"({"deletedCount":1,"requestId":10,"success":true,"type":"deleteSpecificFiles"})",
                  R"({"deletedCount":0,"requestId":11,"success":false,"type":"deleteSpecificFiles"})",
                  R"({"deletedCount":0,"requestId":12,"success":false,"type":"deleteSpecificFiles"})"));
}

TEST(SystemFilesAdvisor, ReadsSizesOfLockedFilesAndTheRegistry) {
  ASSERT_TRUE(IsWine()) << "this test writes C:\\hiberfil.sys";
  const RegistrySandbox registry;
  constexpr wchar_t kPower[] = LR"(SYSTEM\CurrentControlSet\Control\Power)";
  for (const wchar_t* path : {LR"(C:\hiberfil.sys)", LR"(C:\pagefile.sys)", LR"(C:\swapfile.sys)"})
    DeleteFileW(path);
  TakePostedTexts();
  getSystemFilesAdvisor(11);
  EXPECT_EQ(TakePostedMessages().at(0), json::parse(R"({"hiberfil":{"enabled":false,"exists":false,"size":0},
      "pagefile":{"exists":false,"size":0},"requestId":11,"success":true,"swapfile":{"exists":false,"size":0},
      "type":"getSystemFilesAdvisor"})"));

  PutFile(LR"(C:\hiberfil.sys)", 10);
  const FileHandle in_use = OpenWithoutSharing(LR"(C:\hiberfil.sys)");
  {
    // Five gigabytes that take no room.
    const FileHandle page_file(
        CreateFileW(LR"(C:\pagefile.sys)", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    const LARGE_INTEGER size = {.QuadPart = 5'000'000'000};
    SetFilePointerEx(page_file.get(), size, nullptr, FILE_BEGIN);
    SetEndOfFile(page_file.get());
  }
  SetRegistryData(HKEY_LOCAL_MACHINE, kPower, L"HibernateEnabled", {REG_DWORD, {"\1\0\0\0", 4}});
  getSystemFilesAdvisor(11);
  EXPECT_EQ(TakePostedMessages().at(0), json::parse(R"({"hiberfil":{"enabled":true,"exists":true,"size":10},
      "pagefile":{"exists":true,"size":5000000000},"requestId":11,"success":true,"swapfile":{"exists":false,"size":0},
      "type":"getSystemFilesAdvisor"})"));
  SetRegistryData(HKEY_LOCAL_MACHINE, kPower, L"HibernateEnabled", {REG_DWORD, {"\0\0\0\0", 4}});
  getSystemFilesAdvisor(11);
  EXPECT_EQ(TakePostedMessages().at(0)["hiberfil"]["enabled"], false);
  DeleteFileW(LR"(C:\pagefile.sys)");
}

TEST(SetHibernation, AsksTheService) {
  const auto reply = [](const char* success) {
    return R"({"enabled":true,"requestId":12,"success":)" + std::string(success) +
           R"(,"type":"setHibernation"})";
  };
  ExpectServiceAction({[] { setHibernation(12, true); },
                       "set_hibernation",
                       R"({"enabled":true})",
                       {{"success", true}},
                       reply("true"),
                       reply("false")});
}
