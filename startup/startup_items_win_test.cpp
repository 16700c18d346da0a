#include "startup/startup_items_win.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "base/handle_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/pipe_server_win.h"
#include "testing/temp_folder_win.h"

namespace {

constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kApproved[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";
constexpr wchar_t kSandbox[] = L"Software\\VarnelTestRun";

// A key that exists for the duration of a test, without the values that the test added afterwards.
class TestKey {
 public:
  TestKey(HKEY hive, const wchar_t* path) : hive_(hive), path_(path) {
    DWORD disposition = 0;
    EXPECT_EQ(RegCreateKeyExW(hive, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key_.put(), &disposition),
              0);
    created_ = disposition == REG_CREATED_NEW_KEY;
  }
  ~TestKey() {
    for (const std::wstring& name : names_) RegDeleteValueW(key_.get(), name.c_str());
    key_.reset();
    if (created_) RegDeleteKeyW(hive_, path_);
  }
  void Set(const std::wstring& name, DWORD type, const void* data, size_t size_bytes) {
    names_.push_back(name);
    EXPECT_EQ(RegSetValueExW(key_.get(), name.c_str(), 0, type, static_cast<const BYTE*>(data),
                             static_cast<DWORD>(size_bytes)),
              0);
  }
  void SetText(const std::wstring& name, const std::wstring& text, DWORD type = REG_SZ) {
    Set(name, type, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  }
  void SetBytes(const std::wstring& name, const std::vector<BYTE>& bytes) {
    Set(name, REG_BINARY, bytes.data(), bytes.size());
  }
  std::vector<BYTE> Get(const std::wstring& name, DWORD& type) {
    std::vector<BYTE> data(256);
    auto size_bytes = static_cast<DWORD>(data.size());
    const LSTATUS status =
        RegQueryValueExW(key_.get(), name.c_str(), nullptr, &type, data.data(), &size_bytes);
    data.resize(status == ERROR_SUCCESS ? size_bytes : 0);
    return data;
  }
  void Forget(const std::wstring& name) { names_.push_back(name); }

 private:
  HKEY hive_;
  const wchar_t* path_;
  RegistryKey key_;
  bool created_ = false;
  std::vector<std::wstring> names_;
};

const StartupItem* Find(const std::vector<StartupItem>& items, const std::wstring& name) {
  const auto found = std::ranges::find(items, name, &StartupItem::name);
  return found == items.end() ? nullptr : &*found;
}

bool KeyExists(HKEY hive, const wchar_t* path) {
  RegistryKey key;
  return RegOpenKeyExW(hive, path, 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

std::vector<std::string> Toggle(const std::string& scope, const std::string& name, bool enabled) {
  TakePostedTexts();
  toggleStartupItem(7, scope, name, enabled);
  return TakePostedTexts();
}

const std::string kFailed = R"({"requestId":7,"success":false,"type":"toggleStartupItem"})";
const std::string kNotice = R"({"type":"show_service_error_modal"})";

}  // namespace

TEST(ReadRunKey, KeepsTextThatFitsAndIsNotEmpty) {
  ASSERT_TRUE(IsWine());
  TestKey key(HKEY_CURRENT_USER, kSandbox);
  key.SetText(L"plain", L"C:\\Tools\\notes.exe");
  key.SetText(L"Žluť ďábel", L"%windir%\\Příliš.exe", REG_EXPAND_SZ);
  key.Set(L"no final NUL", REG_SZ, L"steam", 5 * sizeof(wchar_t));
  key.Set(L"two NULs", REG_SZ, L"a\0", 3 * sizeof(wchar_t));
  key.SetText(L"empty", L"");
  key.Set(L"no data", REG_SZ, nullptr, 0);
  key.Set(L"number", REG_DWORD, "\1\0\0\0", 4);
  key.SetText(L"list", L"a", REG_MULTI_SZ);
  key.SetText(L"just fits", std::wstring(511, L'x'));
  key.SetText(L"too long", std::wstring(512, L'x'));
  key.SetText(std::wstring(255, L'n'), L"longest name");
  key.SetText(std::wstring(256, L'n'), L"name too long");
  key.SetText(L"after", L"x");

  std::vector<StartupItem> items = {{L"before", L"", L"", L"", true, L""}};
  ReadRunKey(HKEY_CURRENT_USER, kSandbox, L"scope", items);
  std::vector<std::wstring> names;
  for (const StartupItem& item : items) names.push_back(item.name);
  std::ranges::sort(names.begin() + 1, names.end());
  EXPECT_EQ(names, (std::vector<std::wstring>{L"before", L"after", L"just fits", std::wstring(255, L'n'),
                                              L"no final NUL", L"plain", L"two NULs", L"Žluť ďábel"}));
  EXPECT_EQ(Find(items, L"Žluť ďábel")->command, L"%windir%\\Příliš.exe");
  EXPECT_EQ(Find(items, L"no final NUL")->command, L"steam");
  EXPECT_EQ(Find(items, L"no final NUL")->impact, L"High");
  EXPECT_EQ(Find(items, L"two NULs")->command, std::wstring(L"a\0", 2)) << "one NUL is removed";
  const StartupItem& plain = *Find(items, L"plain");
  EXPECT_EQ(plain.command, L"C:\\Tools\\notes.exe");
  EXPECT_EQ(plain.registry_path, kSandbox);
  EXPECT_EQ(plain.scope, L"scope");
  EXPECT_TRUE(plain.enabled);

  ReadRunKey(HKEY_CURRENT_USER, L"Software\\VarnelNoSuchKey", L"scope", items);
  EXPECT_EQ(items.size(), names.size());
}

TEST(GetStartupItems, UserThenMachineWithApproval) {
  ASSERT_TRUE(IsWine());
  TestKey user(HKEY_CURRENT_USER, kRun), machine(HKEY_LOCAL_MACHINE, kRun);
  TestKey user_approved(HKEY_CURRENT_USER, kApproved), machine_approved(HKEY_LOCAL_MACHINE, kApproved);
  for (const wchar_t* name : {L"VarnelTest 2", L"VarnelTest 3", L"VarnelTest 6", L"VarnelTest text",
                              L"VarnelTest none", L"VarnelTest machine", L"VarnelTest long"})
    user.SetText(name, L"user.exe");
  machine.SetText(L"VarnelTest machine", L"machine.exe");
  machine.SetText(L"VarnelTest 3", L"machine.exe");
  user_approved.SetBytes(L"VarnelTest 2", {2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  user_approved.SetBytes(L"VarnelTest 3", {3, 0, 0, 0, 0x17, 0x79, 0xBD, 1, 0x17, 0xD9, 0xD1, 1});
  user_approved.SetBytes(L"VarnelTest 6", {6, 0, 0, 0});
  user_approved.SetText(L"VarnelTest text", L"\x0303");
  user_approved.SetBytes(L"VarnelTest long", std::vector<BYTE>(257, 3));
  machine_approved.SetBytes(L"VarnelTest machine", {3});

  const std::vector<StartupItem> items = GetStartupItems();
  const auto first_machine = std::ranges::find(items, L"HKLM", &StartupItem::scope);
  for (auto item = items.begin(); item != items.end(); ++item)
    EXPECT_EQ(item->scope == L"HKLM", item >= first_machine) << "the user's come first";
  struct {
    const wchar_t* name;
    const wchar_t* scope;
    bool enabled;
  } cases[] = {
      {L"VarnelTest 2", L"HKCU", true},    {L"VarnelTest 3", L"HKCU", false},
      {L"VarnelTest 6", L"HKCU", false},   {L"VarnelTest text", L"HKCU", true},
      {L"VarnelTest none", L"HKCU", true}, {L"VarnelTest machine", L"HKCU", true},
      {L"VarnelTest long", L"HKCU", true}, {L"VarnelTest machine", L"HKLM", false},
      {L"VarnelTest 3", L"HKLM", true},
  };
  for (const auto& c : cases) {
    const auto item = std::ranges::find_if(
        items, [&](const StartupItem& i) { return i.name == c.name && i.scope == c.scope; });
    ASSERT_NE(item, items.end()) << c.name;
    EXPECT_EQ(item->enabled, c.enabled) << c.name << c.scope;
    EXPECT_EQ(item->registry_path, kRun);
  }

  // Half a surrogate is a legal name for the registry.
  const std::wstring odd = {L'V', wchar_t{0xD800}};
  user.SetText(odd, odd);
  TakePostedTexts();
  getStartupItems(7);
  const std::vector<nlohmann::json> messages = TakePostedMessages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0]["items"].size(), items.size() + 1);
}

TEST(ToggleStartupItem, WritesTwelveBytesForTheUser) {
  ASSERT_TRUE(IsWine());
  if (!KeyExists(HKEY_CURRENT_USER, kApproved)) {
    EXPECT_EQ(Toggle("HKCU", "VarnelTest", false), std::vector{kFailed});
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, kApproved)) << "the key is not created";
  }
  TestKey approved(HKEY_CURRENT_USER, kApproved);
  approved.Forget(L"VarnelTest Ž");
  DWORD type = REG_NONE;
  EXPECT_EQ(Toggle("HKCU", "VarnelTest Ž", false), std::vector{RecordedMessage("toggleStartupItem")});
  EXPECT_EQ(approved.Get(L"VarnelTest Ž", type), (std::vector<BYTE>{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
  EXPECT_EQ(Toggle("HKCU", "VarnelTest Ž", true), std::vector{RecordedMessage("toggleStartupItem")});
  EXPECT_EQ(approved.Get(L"VarnelTest Ž", type), (std::vector<BYTE>{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Toggle("hkcu", "VarnelTest Ž", false), std::vector{kFailed});
  EXPECT_EQ(approved.Get(L"VarnelTest Ž", type)[0], 2);
}

TEST(SetStartupApproved, AnyOtherScopeIsTheMachine) {
  ASSERT_TRUE(IsWine());
  TestKey user(HKEY_CURRENT_USER, kApproved), machine(HKEY_LOCAL_MACHINE, kApproved);
  machine.Forget(L"VarnelTest");
  DWORD type = REG_NONE;
  EXPECT_TRUE(SetStartupApproved(L"anything", L"VarnelTest", false));
  EXPECT_EQ(machine.Get(L"VarnelTest", type).size(), 12u);
  EXPECT_TRUE(user.Get(L"VarnelTest", type).empty());
}

TEST(ToggleStartupItem, LeavesTheMachineToTheService) {
  EXPECT_EQ(Toggle("HKLM", "x", true), (std::vector{kNotice, kFailed}));
  {
    StandInService service({{"toggleHKLMStartup", Reply({{"success", true}})}});
    EXPECT_EQ(Toggle("HKLM", "Žlutý \"x\"", false), std::vector{RecordedMessage("toggleStartupItem")});
    EXPECT_EQ(
        service.requests(),
        std::vector<std::string>{
            "{\"action\":\"toggleHKLMStartup\",\"data\":{\"enable\":false,\"name\":\"Žlutý \\\"x\\\"\"}}\n"});
    EXPECT_EQ(Toggle("other", "x", true), std::vector{kFailed});
    EXPECT_EQ(service.requests().size(), 1u);
  }
  StandInService service({{"toggleHKLMStartup", Reply({{"done", true}})}});
  EXPECT_EQ(Toggle("HKLM", "x", true), std::vector{kFailed}) << "an answer without success";
}
