#include "startup/startup_items_win.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include <gtest/gtest.h>

#include "testing/handle_count_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/registry_sandbox_win.h"
#include "testing/service_action_win.h"

namespace {

constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kApproved[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";

RegistryData Approval(const std::string& bytes) {
  return {REG_BINARY, bytes};
}

std::vector<std::string> Toggle(const std::string& scope, const std::string& name, bool enabled) {
  TakePostedTexts();
  toggleStartupItem(7, scope, name, enabled);
  return TakePostedTexts();
}

const std::string kDone = RecordedMessage("toggleStartupItem");
const std::string kFailed = R"({"requestId":7,"success":false,"type":"toggleStartupItem"})";

}  // namespace

TEST(ReadRunKey, KeepsTextThatFitsAndIsNotEmpty) {
  const RegistrySandbox registry;
  const wchar_t* path = L"Software\\Other Run";
  const struct {
    std::wstring name;
    RegistryData data;
    std::optional<std::wstring> command;  // nothing: left out
  } cases[] = {
      {L"plain", RegistryText(L"C:\\Tools\\notes.exe"), L"C:\\Tools\\notes.exe"},
      {L"Žluť ďábel", RegistryText(L"%windir%\\Příliš.exe", REG_EXPAND_SZ), L"%windir%\\Příliš.exe"},
      {L"no final NUL", {REG_SZ, std::string("x\0", 2)}, L"x"},
      {L"two NULs", {REG_SZ, std::string("x\0\0\0\0\0", 6)}, std::wstring(L"x\0", 2)},
      {L"empty", RegistryText(L""), {}},
      {L"no data", {REG_SZ, ""}, {}},
      {L"half a unit", {REG_SZ, "x"}, {}},
      {L"number", {REG_DWORD, std::string("\1\0\0\0", 4)}, {}},
      {L"list", RegistryText(L"a", REG_MULTI_SZ), {}},
      {L"just fits", RegistryText(std::wstring(511, L'x')), std::wstring(511, L'x')},
      {L"too long", RegistryText(std::wstring(512, L'x')), {}},
      {std::wstring(255, L'n'), RegistryText(L"longest name"), L"longest name"},
      {std::wstring(256, L'n'), RegistryText(L"name too long"), {}},
      {L"zzz after all these", RegistryText(L"steam"), L"steam"},
  };
  for (const auto& c : cases) SetRegistryData(HKEY_LOCAL_MACHINE, path, c.name, c.data);
  std::vector<StartupItem> items = {{L"before", L"", L"", L"", true, L""}};
  ReadRunKey(HKEY_LOCAL_MACHINE, path, L"scope", items);
  ReadRunKey(HKEY_LOCAL_MACHINE, L"Software\\No such key", L"scope", items);
  EXPECT_EQ(items.at(0).name, L"before");
  size_t listed = 1;
  for (const auto& c : cases) {
    const auto item = std::ranges::find(items, c.name, &StartupItem::name);
    ASSERT_EQ(item != items.end(), c.command.has_value()) << c.name;
    if (!c.command) continue;
    ++listed;
    EXPECT_EQ(item->command, *c.command) << c.name;
    EXPECT_EQ(item->impact, *c.command == L"steam" ? L"High" : L"Low") << c.name;
    EXPECT_EQ(std::tie(item->registry_path, item->scope), std::tuple(path, L"scope"));
    EXPECT_TRUE(item->enabled);
  }
  EXPECT_EQ(items.size(), listed);
}

TEST(GetStartupItems, UserThenMachineWithApproval) {
  const RegistrySandbox registry;
  const std::wstring half_surrogate = {L'V', wchar_t{0xD800}};  // legal in the registry
  const struct {
    HKEY hive;
    std::wstring name;
    RegistryData approval;  // none: no value
    bool enabled;
  } cases[] = {
      {HKEY_LOCAL_MACHINE, L"disabled for the machine", Approval("\3"), false},
      {HKEY_LOCAL_MACHINE, L"disabled for the user", {}, true},
      {HKEY_CURRENT_USER, L"disabled for the machine", {}, true},
      {HKEY_CURRENT_USER, L"disabled for the user", Approval("\3ignored"), false},
      {HKEY_CURRENT_USER, L"enabled", Approval(std::string("\2\0\0\0\0\0\0\0\0\0\0\0", 12)), true},
      {HKEY_CURRENT_USER, L"no binary value", RegistryText(L"\x0303"), true},
      {HKEY_CURRENT_USER, L"fits", Approval(std::string(256, '\3')), false},
      {HKEY_CURRENT_USER, L"too long", Approval(std::string(257, '\3')), true},
      {HKEY_CURRENT_USER, half_surrogate, {}, true},
  };
  for (const auto& c : cases) {
    SetRegistryData(c.hive, kRun, c.name, RegistryText(L"x.exe"));
    if (c.approval.type != REG_NONE) SetRegistryData(c.hive, kApproved, c.name, c.approval);
  }
  const int handles = HandleCount();
  const std::vector<StartupItem> items = GetStartupItems();
  EXPECT_EQ(HandleCount(), handles);
  EXPECT_EQ(items.size(), std::size(cases));
  EXPECT_TRUE(std::ranges::is_sorted(items, {}, &StartupItem::scope)) << "the user's come first";
  for (const auto& c : cases) {
    const wchar_t* scope = c.hive == HKEY_CURRENT_USER ? L"HKCU" : L"HKLM";
    const auto item = std::ranges::find_if(
        items, [&](const StartupItem& i) { return i.name == c.name && i.scope == scope; });
    ASSERT_NE(item, items.end()) << c.name;
    EXPECT_EQ(item->enabled, c.enabled) << c.name << scope;
    EXPECT_EQ(item->registry_path, kRun);
  }
  TakePostedTexts();
  getStartupItems(7);
  EXPECT_EQ(TakePostedMessages().at(0)["items"].size(), items.size());
}

TEST(ToggleStartupItem, WritesTwelveBytesForTheUser) {
  const RegistrySandbox registry;
  const auto approval = [] { return GetRegistryData(HKEY_CURRENT_USER, kApproved, L"Žlutý"); };
  EXPECT_EQ(Toggle("HKCU", "Žlutý", false), std::vector{kFailed});
  EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, kApproved)) << "the key is not created";

  SetRegistryData(HKEY_CURRENT_USER, kApproved, L"Žlutý", Approval("\2longer than twelve bytes"));
  EXPECT_EQ(Toggle("HKCU", "Žlutý", false), std::vector{kDone});
  EXPECT_EQ(approval(), Approval(std::string("\3\0\0\0\0\0\0\0\0\0\0\0", 12)));
  EXPECT_EQ(Toggle("HKCU", "Žlutý", true), std::vector{kDone});
  EXPECT_EQ(approval(), Approval(std::string("\2\0\0\0\0\0\0\0\0\0\0\0", 12)));
  EXPECT_EQ(Toggle("hkcu", "Žlutý", false), std::vector{kFailed});
  EXPECT_EQ(approval().bytes[0], 2);

  EXPECT_FALSE(SetStartupApproved(L"hkcu", L"x", true)) << "any other scope is the machine";
  SetRegistryData(HKEY_LOCAL_MACHINE, kApproved, L"y", {REG_DWORD, "1234"});
  EXPECT_TRUE(SetStartupApproved(L"hkcu", L"x", true));
  EXPECT_EQ(GetRegistryData(HKEY_LOCAL_MACHINE, kApproved, L"x").bytes.size(), 12u);
  EXPECT_EQ(GetRegistryData(HKEY_CURRENT_USER, kApproved, L"x"), RegistryData{});
}

TEST(ToggleStartupItem, LeavesTheMachineToTheService) {
  ExpectServiceAction({[] { toggleStartupItem(7, "HKLM", "Žlutý \"x\"", false); },
                       "toggleHKLMStartup",
                       R"({"enable":false,"name":"Žlutý \"x\""})",
                       {{"success", true}},
                       kDone,
                       kFailed});
  EXPECT_EQ(Toggle("other", "x", true), std::vector{kFailed}) << "the service is not even looked for";
}
