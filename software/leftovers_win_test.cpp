#include "software/leftovers_win.h"

#include <filesystem>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/handle_win.h"
#include "base/text.h"
#include "testing/directory_link_win.h"
#include "testing/recording_page.h"
#include "testing/registry_sandbox_win.h"
#include "testing/stand_ins/ntfs_win.h"
#include "testing/stand_ins/pipe_server_win.h"
#include "testing/temp_folder_win.h"

using nlohmann::json;
using testing::ElementsAre;
namespace fs = std::filesystem;

namespace {

constexpr const char* kNoService = R"({"type":"show_service_error_modal"})";

void MakeKey(HKEY hive, const wchar_t* path) {
  RegistryKey key;
  ASSERT_EQ(RegCreateKeyExW(hive, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr),
            ERROR_SUCCESS);
}

// With five root folders and a registry of its own.
class Leftovers : public testing::Test {
 protected:
  void SetUp() override {
    if (!IsWine()) GTEST_SKIP() << "deletes folders and keys for good";
    for (const wchar_t* name :
         {L"LOCALAPPDATA", L"APPDATA", L"PROGRAMDATA", L"ProgramFiles", L"ProgramFiles(x86)"}) {
      wchar_t value[1024];
      const DWORD length = GetEnvironmentVariableW(name, value, 1024);
      saved_.emplace_back(name, std::wstring(value, length));
      SetEnvironmentVariableW(name, (root_ / name).c_str());
    }
  }
  void TearDown() override {
    for (const auto& [name, value] : saved_)
      SetEnvironmentVariableW(name.c_str(), value.empty() ? nullptr : value.c_str());
    TakePostedTexts();
  }
  std::string Path(const fs::path& below) const { return WideToUtf8((root_ / below).wstring()); }
  json Find() {
    findLeftovers(8, "VarnelTestMaker.Tool", "Varnel Test Tool");
    const auto texts = TakePostedMessages();
    EXPECT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts.at(0)["success"], true);
    return texts.at(0)["leftovers"];
  }
  static bool Clean(const json& items) {
    cleanLeftovers(9, items);
    for (const json& message : TakePostedMessages())
      if (message["type"] == "cleanLeftovers") return message["success"];
    ADD_FAILURE() << "no reply";
    return false;
  }

  const RegistrySandbox registry_;
  const TempFolder folder_;  // below C:\users in a Wine prefix
  const fs::path root_{folder_.path};

 private:
  std::vector<std::pair<std::wstring, std::wstring>> saved_;
};

}  // namespace

TEST_F(Leftovers, AreFoundInOrderRemovedAndGone) {
  PutFile(root_ / L"APPDATA\\VarnelTestMaker\\Tool\\sub\\data.bin", 1234);
  PutFile(root_ / L"LOCALAPPDATA\\VarnelTestMaker.Tool\\žluť.txt", 5);
  PutFile(root_ / L"LOCALAPPDATA\\Varnel Test Tool\\read only.txt", 1);
  PutFile(root_ / L"ProgramFiles\\Tool", 7);
  PutFile(root_ / L"canary\\keep.txt", 100);
  auto ntfs = std::make_optional<StandInNtfs>();
  ntfs->AddFolderLink((root_ / L"APPDATA\\VarnelTestMaker\\Tool\\link").wstring(),
                      (root_ / L"canary").wstring(), IO_REPARSE_TAG_MOUNT_POINT);
  const fs::path read_only = root_ / L"LOCALAPPDATA\\Varnel Test Tool";
  SetFileAttributesW((read_only / L"read only.txt").c_str(), FILE_ATTRIBUTE_READONLY);
  SetFileAttributesW(read_only.c_str(), FILE_ATTRIBUTE_READONLY);
  MakeKey(HKEY_CURRENT_USER, L"Software\\VarnelTestMaker\\Tool\\Deep");
  MakeKey(HKEY_CURRENT_USER, L"Software\\VarnelTestMaker\\Other");
  MakeKey(HKEY_LOCAL_MACHINE, L"Software\\VarnelTestMaker\\Tool");
  MakeKey(HKEY_CURRENT_USER, L"Software\\Varnel Test Tool");

  const auto item = [](const char* type, const std::string& path, int size) {
    return json{{"type", type}, {"path", path}, {"size", size}};
  };
  const json found = Find();
  EXPECT_EQ(found, json::array({item("directory", Path(L"LOCALAPPDATA\\Varnel Test Tool"), 1),
                                item("directory", Path(L"LOCALAPPDATA\\VarnelTestMaker.Tool"), 5),
                                item("directory", Path(L"APPDATA\\VarnelTestMaker\\Tool"), 1234),
                                item("registry", "HKCU\\Software\\VarnelTestMaker\\Tool", 0),
                                item("registry", "HKLM\\Software\\VarnelTestMaker\\Tool", 0),
                                item("registry", "HKCU\\Software\\Varnel Test Tool", 0)}));

  json machine_key = json::array({found[4]}), others = found;
  others.erase(4);
  EXPECT_TRUE(Clean(others));
  ntfs.reset();  // it stands in for pipes badly
  StandInService service({{"cleanHKLMRegistry", Reply({{"success", true}})}});
  EXPECT_TRUE(Clean(machine_key));
  EXPECT_THAT(
      service.requests(),
      ElementsAre(
          "{\"action\":\"cleanHKLMRegistry\",\"data\":{\"subKey\":\"Software\\\\VarnelTestMaker\\\\Tool\"}}\n"));
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\VarnelTestMaker");  // what the service would have done
  EXPECT_EQ(Find(), json::array());
  EXPECT_TRUE(fs::exists(root_ / L"canary\\keep.txt"));
  EXPECT_TRUE(fs::exists(root_ / L"APPDATA\\VarnelTestMaker"));
  EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Software\\VarnelTestMaker\\Other"));
}

TEST_F(Leftovers, SkipMissingRoots) {
  PutFile(root_ / L"LOCALAPPDATA\\Tool\\a", 1);
  PutFile(root_ / L"PROGRAMDATA\\Tool\\a", 2);
  SetEnvironmentVariableW(L"LOCALAPPDATA", nullptr);
  SetEnvironmentVariableW(L"APPDATA", L"");
  const json found = Find();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]["path"], Path(L"PROGRAMDATA\\Tool"));
}

TEST_F(Leftovers, WithoutTheServiceTheOthersGoAllTheSame) {
  fs::create_directories(root_ / L"one");
  fs::create_directories(root_ / L"two");
  const json items = {{{"type", "directory"}, {"path", Path(L"one")}},
                      {{"type", "directory"}, {"path", "C:\\Program Files\\VarnelTestTool"}},
                      {{"type", "registry"}, {"path", "HKLM\\Software\\VarnelTestMaker"}},
                      {{"type", "registry"}, {"path", "hkcu\\Software\\VarnelTestMaker"}},
                      {{"type", "file"}, {"path", Path(L"two")}},
                      "neither",
                      {{"type", "directory"}, {"path", Path(L"two")}}};
  MakeKey(HKEY_CURRENT_USER, L"Software\\VarnelTestMaker");
  cleanLeftovers(9, items);
  EXPECT_THAT(TakePostedTexts(), ElementsAre(kNoService, kNoService,
                                             R"({"requestId":9,"success":false,"type":"cleanLeftovers"})"));
  EXPECT_FALSE(fs::exists(root_ / L"one"));
  EXPECT_FALSE(fs::exists(root_ / L"two"));
  EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Software\\VarnelTestMaker"));
}

TEST_F(Leftovers, TheServicesAnswerDecides) {
  const json item = {{{"type", "directory"}, {"path", "C:\\Program Files\\Varnel Žluť"}}};
  const struct {
    const char* name;
    ServiceAnswer answer;
    bool want;
  } cases[] = {{"done", Reply({{"success", true}}), true},
               {"failed", Reply({{"success", false}}), false},
               {"no such member", Reply(json::object()), false},
               {"no object", Reply({1, 2}), false},
               {"no answer", {}, false}};
  for (const auto& c : cases) {
    StandInService service({{"cleanLeftoverPath", c.answer}});
    EXPECT_EQ(Clean(item), c.want) << c.name;
    EXPECT_THAT(
        service.requests(),
        ElementsAre(
            "{\"action\":\"cleanLeftoverPath\",\"data\":{\"path\":\"C:\\\\Program Files\\\\Varnel Žluť\"}}\n"));
  }
}

TEST_F(Leftovers, LocalRemovalTellsWhatIsLeft) {
  PutFile(root_ / L"held\\file.txt", 1);
  PutFile(root_ / L"held\\other.txt", 1);
  MakeKey(HKEY_CURRENT_USER, L"Software\\VarnelTestMaker\\Tool");
  {
    const FileHandle open(CreateFileW((root_ / L"held\\file.txt").c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(RemoveLeftoverItem("directory", Path(L"held")));
  }
  EXPECT_FALSE(fs::exists(root_ / L"held\\other.txt"));
  EXPECT_TRUE(RemoveLeftoverItem("directory", Path(L"held")));
  EXPECT_TRUE(RemoveLeftoverItem("directory", Path(L"held"))) << "gone already";
  EXPECT_TRUE(RemoveLeftoverItem("registry", "HKCU\\Software\\VarnelTestMaker\\Tool"));
  EXPECT_FALSE(RemoveLeftoverItem("registry", "HKCU\\Software\\VarnelTestMaker\\Tool"));
  EXPECT_FALSE(RemoveLeftoverItem("registry", "HKCU\\"));
  EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Software"));
  EXPECT_FALSE(RemoveLeftoverItem("registry", "HKCR\\VarnelTest"));
  EXPECT_FALSE(RemoveLeftoverItem("", Path(L"held")));
}

// A folder that is a link itself: the link goes, what it leads to stays.
TEST_F(Leftovers, ALinkGoesAlone) {
  PutFile(root_ / L"canary\\keep.txt", 1);
  StandInNtfs ntfs;
  ntfs.AddFolderLink((root_ / L"link").wstring(), (root_ / L"canary").wstring(), IO_REPARSE_TAG_MOUNT_POINT);
  EXPECT_TRUE(RemoveLeftoverItem("directory", Path(L"link")));
  EXPECT_EQ(GetFileAttributesW((root_ / L"link").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(fs::exists(root_ / L"canary\\keep.txt"));
}

// The same with a link that the system itself knows. Wine cannot delete it and says that the folder is not
// empty.
TEST_F(Leftovers, ARealLinkIsNeverEmptied) {
  const TempFolder elsewhere;
  PutFile(elsewhere.path + L"\\keep.txt", 1);
  ASSERT_TRUE(MakeDirectoryLink((root_ / L"link").wstring(), elsewhere.path));
  RemoveLeftoverItem("directory", Path(L"link"));
  EXPECT_TRUE(Exists(elsewhere.path + L"\\keep.txt"));
}
