#include <windows.h>
#include <shlobj.h>

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
    if (!IsWine()) GTEST_SKIP() << "empties system folders";
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
    if (!IsWine()) return;  // also called when SetUp has skipped the test
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

TEST_F(Junk, GetJunkTakesTheServicesLargerFiguresOrTellsThatThereIsNone) {
  getJunk(7);
  EXPECT_THAT(TakePostedTexts(), ElementsAre(kServiceNotice, BuildJunkReply("junk", 7, {kFull})));
  const StandInService service(
      {{"getJunkSizes", Reply({{"success", true}, {"windowsTempBytes", 2}, {"prefetchBytes", 5000}})}});
  getJunk(7);
  EXPECT_THAT(service.requests(), ElementsAre("{\"action\":\"getJunkSizes\",\"data\":{}}\n"));
  EXPECT_THAT(TakePostedTexts(),
              ElementsAre(BuildJunkReply("junk", 7, {{3, 4, 5000, 16, 2016, 14336, 114688}})));
}

TEST_F(Junk, CleanJunkWithServiceDeletesNothingItself) {
  for (const ServiceAnswer& answer :
       {Reply({{"success", true}}), Reply({{"success", false}}), RawReply("")}) {
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
  cleanJunk({kAll, 8.5});
  EXPECT_THAT(TakePostedTexts(), ElementsAre(BuildJunkReply("cleanJunk", 8.5, {kCleaned})));
}

TEST(Downloads, AreInTheProfileWhenTheShellKnowsNoFolder) {
  const RegistrySandbox registry;
  SetRegistryData(
      HKEY_CURRENT_USER, LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders)",
      L"{374DE290-123F-4565-9164-39C4925E467B}", RegistryText(L"C:\\no such folder", REG_EXPAND_SZ));
  const TempFolder folder;
  const std::wstring path = folder.path + L"\\Downloads\\a.cab";
  PutFile(path, 2'000'000);
  {
    const FILETIME long_ago = {0, 30'000'000};
    const FileHandle file(
        CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &long_ago));
  }
  TakePostedTexts();
  const EnvironmentText profile(L"USERPROFILE", folder.path.c_str());
  getDownloadsJunk(9);
  EXPECT_EQ(TakePostedMessages().at(0)["count"], 1);
  for (const wchar_t* missing : {L"C:\\no such profile", static_cast<const wchar_t*>(nullptr)}) {
    SetEnvironmentVariableW(L"USERPROFILE", missing);
    getDownloadsJunk(9);
    EXPECT_THAT(
        TakePostedTexts(),
        ElementsAre(
            R"({"count":0,"items":[],"requestId":9,"success":true,"totalBytes":0,"type":"getDownloadsJunk"})"));
  }
}

TEST(Downloads, RecyclesNothingByAnotherName) {
  const TempFolder folder;
  PutFile(folder.path + L"\\kept.zip", 20);
  // Only by this form of its path can it be made, and deleted at the end.
  const std::wstring dotted = LR"(\\?\)" + folder.path + L"\\kept.zip.";
  EXPECT_TRUE(FileHandle(CreateFileW(dotted.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr)));
  const std::string inside = WideToUtf8(folder.path), file = inside + "\\kept.zip";
  TakePostedTexts();
  deleteSpecificFiles(10, {file + ".", file + " ", inside + "\\.\\kept.zip", inside + "\\x\\..\\kept.zip",
                           "kept.zip", inside + "/kept.zip", file + std::string("\0x", 2), "C:", ""});
  EXPECT_TRUE(Exists(folder.path + L"\\kept.zip"));
  EXPECT_TRUE(DeleteFileW(dotted.c_str()));
  EXPECT_THAT(
      TakePostedTexts(),
      ElementsAre(R"({"deletedCount":0,"requestId":10,"success":false,"type":"deleteSpecificFiles"})"));
}

TEST(SystemFilesAdvisor, ReadsSizesOfLockedFilesAndTheRegistry) {
  if (!IsWine()) GTEST_SKIP() << "writes C:\\hiberfil.sys";
  const RegistrySandbox registry;
  for (const wchar_t* path : {LR"(C:\hiberfil.sys)", LR"(C:\pagefile.sys)", LR"(C:\swapfile.sys)"})
    DeleteFileW(path);
  PutFile(LR"(C:\hiberfil.sys)", 10);
  TakePostedTexts();
  {
    const FileHandle in_use = OpenWithoutSharing(LR"(C:\hiberfil.sys)");
    getSystemFilesAdvisor(11);
    EXPECT_EQ(TakePostedMessages().at(0),
              json::parse(R"({"hiberfil":{"enabled":false,"exists":true,"size":10},
        "pagefile":{"exists":false,"size":0},"requestId":11,"success":true,"swapfile":{"exists":false,"size":0},
        "type":"getSystemFilesAdvisor"})"));
  }
  DeleteFileW(LR"(C:\hiberfil.sys)");
  SetRegistryData(HKEY_LOCAL_MACHINE, LR"(SYSTEM\CurrentControlSet\Control\Power)", L"HibernateEnabled",
                  {REG_DWORD, {"\1\0\0\0", 4}});
  getSystemFilesAdvisor(11);
  EXPECT_EQ(TakePostedMessages().at(0)["hiberfil"],
            json::parse(R"({"enabled":true,"exists":false,"size":0})"));
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
