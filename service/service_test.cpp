#include <initializer_list>

#include <gtest/gtest.h>

#include "base/lower_case.h"
#include "base/text.h"
#include "service/request.h"
#include "service/rules.h"
#include "service/tool_text.h"

namespace {

TEST(ServiceRequest, IsAnActionWithFlatData) {
  const std::optional<PeerRequest> request = ParseRequest(
      R"({"action":"save_system_env","data":{"is_delete":false,"name":"PŘÍKLAD","value":"a\u0000b"}})");
  ASSERT_TRUE(request);
  EXPECT_EQ(request->action, "save_system_env");
  EXPECT_EQ(request->Flag("is_delete"), false);
  EXPECT_EQ(request->Text("name"), "PŘÍKLAD");
  EXPECT_EQ(request->Text("value"), std::string("a\0b", 3));
  EXPECT_FALSE(request->Flag("name") || request->Text("is_delete") || request->Text("other"));

  const std::string full = R"({"action":"a","data":{"x":true}})";
  EXPECT_TRUE(ParseRequest(full));
  for (const std::string& line : std::initializer_list<std::string>{
           "",
           "{}",
           R"(["a"])",
           R"({"action":"a"})",
           R"({"data":{}})",
           R"({"action":1,"data":{}})",
           R"({"action":"a","data":null})",
           R"({"action":"a","data":{"x":1}})",
           R"({"action":"a","data":{"x":["y"]}})",
           R"({"action":"a","data":{"x":{}}})",
           R"({"action":"a","data":{"x":true,"x":false}})",
           R"({"action":"a","action":"b","data":{}})",
           R"({"action":"a","data":{},"data":{}})",
           R"({"action":"a","data":{},"more":{}})",
           R"({"action":"a","data":{},"more":"x"})",
           R"({"action":"a","data":{},"more":true})",
           R"({"action":"a","data":{"x":"\ud800"}})",
           "{\"action\":\"\xFF\",\"data\":{}}",
           full + full,
           full.substr(0, full.size() - 1),
           std::string(1'000'000, '['),
           R"({"action":"a","data":{"x":")" + std::string(kMaxRequestBytes, 'x') + "\"}}"})
    EXPECT_FALSE(ParseRequest(line)) << line.substr(0, 100);
}

TEST(ServiceRules, AdmitReadersUsersAndAdministrators) {
  JunkFlags all, own;
  all.fill(true);
  for (size_t i = 0; i < kJunkCategoryCount; ++i)
    own[i] = std::string_view("userTemp browserCache shaderCache").find(kJunkCategories[i].key) !=
             std::string::npos;
  const struct {
    PeerFacts peer;  // administrator, elevated, confined, own program
    bool may_own, may, may_elevated_only;
  } rows[] = {
      {{false, false, false, true}, true, false, false}, {{true, false, false, true}, true, true, false},
      {{true, true, false, true}, true, true, true},     {{true, true, true, true}, false, false, false},
      {{true, true, false, false}, false, false, false}, {{}, false, false, false}};
  for (const auto& row : rows) {
    EXPECT_FALSE(WhyRefused(Who::kAnyone, row.peer, true));
    EXPECT_EQ(!WhyRefused(Who::kOwnProgram, row.peer, true), row.may_own) << &row - rows;
    for (const bool requires_elevation : {false, true}) {
      const bool may = requires_elevation ? row.may_elevated_only : row.may;
      EXPECT_EQ(!WhyRefused(Who::kAdministrator, row.peer, requires_elevation), may) << &row - rows;
      EXPECT_EQ(AllowedJunk(all, row.peer, requires_elevation), may ? all : own) << &row - rows;
      EXPECT_EQ(AllowedJunk({}, row.peer, requires_elevation), JunkFlags{}) << &row - rows;
    }
  }
}

TEST(ServiceRules, ProtectVariablesThatWindowsNeeds) {
  const std::wstring nul(1, L'\0');
  for (const std::wstring& name : {std::wstring(), L"a" + nul, std::wstring(L"a=b"), std::wstring(255, L'x')})
    EXPECT_FALSE(MayChangeVariable(name, L"x", false)) << WideToUtf8(name);
  for (const wchar_t* name :
       {L"Path", L"PATHEXT", L"ComSpec", L"windir", L"SYSTEMROOT", L"Temp", L"tmp", L"OS",
        L"Processor_Architecture", L"NUMBER_OF_PROCESSORS", L"DriverData", L"P\u017FModulePath"}) {
    EXPECT_TRUE(MayChangeVariable(name, L"C:\\x", false)) << WideToUtf8(name);
    EXPECT_FALSE(MayChangeVariable(name, L"C:\\x", true)) << WideToUtf8(name);
    EXPECT_FALSE(MayChangeVariable(name, L" ; ", false)) << WideToUtf8(name);
  }
  EXPECT_TRUE(MayChangeVariable(std::wstring(254, L'x'), std::wstring(32'766, L'y'), false));
  EXPECT_FALSE(MayChangeVariable(L"x", std::wstring(32'767, L'y'), false));
  EXPECT_FALSE(MayChangeVariable(L"x", L"y" + nul, false));
  EXPECT_TRUE(MayChangeVariable(L"JAVA_HOME", L"", true));
}

bool IsSameInAnyCase(std::wstring_view a, std::wstring_view b) {
  return LowerCase(std::wstring(a)) == LowerCase(std::wstring(b));
}

TEST(ServiceRules, AllowOnlyFoldersOfOtherPrograms) {
  const ProgramFolders folders = {{L"C:\\Program Files", L"C:\\Program Files (x86)", L"C:\\ProgramData", L""},
                                  L"C:\\Program Files\\Tools\\Own\\bin"};
  for (const wchar_t* path :
       {L"c:\\PROGRAM files\\Tarn\\Sync 2.0", L"C:\\Program Files (x86)\\Tarn",
        L"C:\\ProgramData\\Žluťoučký kůň", L"C:\\ProgramData\\Tarn\\Windows", L"C:\\Program Files\\.tarn",
        L"C:\\Program Files\\~Tarn", L"C:\\Program Files\\Tools\\Other", L"C:\\ProgramData\\COM10"})
    EXPECT_TRUE(MayRemoveFolder(path, folders, IsSameInAnyCase)) << WideToUtf8(path);
  for (const wchar_t* path : {// not below one of the three
                              L"", L"C:", L"C:\\", L"C:\\Program Files", L"C:\\Program Files\\",
                              L"C:\\Program FilesX\\Tarn", L"C:\\Windows\\Temp\\Tarn",
                              L"D:\\Program Files\\Tarn", L"C:Program Files\\Tarn", L"\\Program Files\\Tarn",
                              L"\\\\host\\C$\\Program Files\\Tarn", L"C:\\Users\\a\\AppData\\Local\\Tarn"})
    EXPECT_FALSE(MayRemoveFolder(path, folders, IsSameInAnyCase)) << WideToUtf8(path);
  for (const wchar_t* path :
       {L"\\\\?\\C:\\Program Files\\Tarn", L"\\\\.\\C:\\Program Files\\Tarn",
        L"\\??\\C:\\Program Files\\Tarn", L"C:\\PROGRA~1\\Tarn", L"C:\\Program Files/Tarn",
        L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolume1\\Program Files\\Tarn"})
    EXPECT_FALSE(MayRemoveFolder(path, folders, IsSameInAnyCase)) << WideToUtf8(path);
  for (const std::wstring& name : std::initializer_list<std::wstring>{
           // another name for something else
           L"..", L"Tarn\\..\\..\\Windows", L"Tarn\\.", L"Tarn\\...", L".. \\Windows", L" \\Tarn",
           L"Microsoft Office.", L"Tarn ", L"Tarn\\", L"\\Tarn", L"Tarn/Sync", L"COMMON~1", L"TARN~12.OLD",
           L"NUL", L"Tarn\\con.txt", L"aux .x", L"COM\u00B9", L"Tarn::$INDEX_ALLOCATION",
           L"Tarn:$I30:$INDEX_ALLOCATION", L"Tarn*", L"Tar?", L"<", L"\"Tarn\"", L"Tarn\uFF0F..",
           L"\u2216Tarn", L"a\u2215b", L"Tarn\nx", std::wstring(L"Tarn\0x", 6), std::wstring(255, L'x'),
           L"x" + std::wstring(32'000, L'\\'),
           // Windows' own, and this program's
           L"Microsoft", L"MICROSOFT Office\\root", L"M\u0131crosoft", L"Window\u017F NT",
           L"Microsoft\\Windows\\Start Menu", L"WindowsApps\\x", L"Common Files\\x", L"Package Cache",
           L"Packages", L"ModifiableWindowsApps", L"Tools", L"tools\\OWN", L"Tools\\Own\\bin",
           L"Tools\\Own\\bin\\x", L"Varnel"})
    EXPECT_FALSE(MayRemoveFolder(L"C:\\Program Files\\" + name, folders, IsSameInAnyCase))
        << WideToUtf8(name);
}

TEST(ServiceRules, AllowOnlyKeysOfOtherPrograms) {
  using Names = std::vector<std::wstring>;
  EXPECT_EQ(RemovableKey(L"SOFTWARE\\Tarn s.r.o.\\Microsoft"),
            (Names{L"SOFTWARE", L"Tarn s.r.o.", L"Microsoft"}));
  for (const wchar_t* key : {L"", L"\\", L"SOFTWARE", L"\\SOFTWARE\\Tarn", L"SYSTEM\\CurrentControlSet",
                             L"SOFTWARE/Tarn", L"HKLM\\SOFTWARE\\Tarn"})
    EXPECT_FALSE(RemovableKey(key)) << WideToUtf8(key);
  for (const std::wstring& name : std::initializer_list<std::wstring>{
           L"", L"\\Tarn", L"Tarn\\", L".\\Microsoft", L"..\\SYSTEM", L" \\x", L"Tarn\uFF3Cx",
           std::wstring(L"Tarn\0x", 6), std::wstring(L"\0Tarn", 5), std::wstring(256, L'x'),
           // Windows' own, and this program's
           L"Microsoft", L"MICROSOFT\\Windows", L"M\u0130crosoft", L"Cla\u017F\u017Fes", L"Classes\\.txt",
           L"Policies", L"Clients\\x", L"Wow6432Node\\Tarn", L"WowAA32Node\\Tarn", L"RegisteredApplications",
           L"Wine", L"Varnel"})
    EXPECT_FALSE(RemovableKey(L"Software\\" + name)) << WideToUtf8(name);
}

TEST(ServiceRules, CheckTitlesFilesAndTemporaryFolders) {
  EXPECT_TRUE(IsDriverTitle("Tarn (R) Audio: 1_2 - 10.1.5.3"));
  for (const char* title : {"", "-Command", "a\"b", "a'b", "a&b", "a;b", "a$b", "a\nb", "á"})
    EXPECT_FALSE(IsDriverTitle(title)) << title;
  EXPECT_TRUE(IsOwnFile(L"c:\\X\\varnel.EXE", L"C:\\x\\Varnel.exe"));
  EXPECT_FALSE(IsOwnFile(L"C:\\x\\..\\x\\Varnel.exe", L"C:\\x\\Varnel.exe"));
  EXPECT_TRUE(IsStartupName(L"Tarn"));
  for (const std::wstring& name : {std::wstring(), std::wstring(1, L'\0'), std::wstring(256, L'x')})
    EXPECT_FALSE(IsStartupName(name)) << name.size();
  const KeptFolders kept = {L"C:\\Windows", {L"C:\\Users\\a"}};
  EXPECT_TRUE(IsTemporaryFolder(L"C:\\Users\\a\\AppData\\Local\\Temp\\", kept, IsSameInAnyCase));
  for (const wchar_t* path : {L"", L"Temp", L"C:\\", L"C:\\Users\\a", L"C:\\Windows\\System32",
                              L"\\\\host\\share\\x", L"C:\\Users\\a\\Temp\\..", L"C:/Users/a/Temp"})
    EXPECT_FALSE(IsTemporaryFolder(path, kept, IsSameInAnyCase)) << WideToUtf8(path);
}

TEST(ServiceRules, AllowOnlyListedServices) {
  for (const wchar_t* name : {L"W3SVC", L"postgresql-x64-16", L"MSSQL$SQLEXPRESS"})
    EXPECT_TRUE(IsDevService(name)) << WideToUtf8(name);
  for (const wchar_t* name :
       {L"", L"WinDefend", L"VarnelService", L"postgresql-", L"mysql80 ", L"MSSQL$a\\b"})
    EXPECT_FALSE(IsDevService(name)) << WideToUtf8(name);
  using Words = std::vector<std::string_view>;
  const struct {
    ServiceState service;
    std::string_view state, start;
    Words commands;
  } rows[] = {{{1, 2, false, true}, "stopped", "delayed", {"start"}},
              {{1, 4, false, false}, "stopped", "disabled", {}},
              {{2, 3, true, false}, "starting", "manual", {}},
              {{4, 3, true, false}, "running", "manual", {"stop", "restart"}},
              {{4, 4, true, false}, "running", "disabled", {"stop"}},
              {{4, 99, false, false}, "running", "unknown", {}}};
  for (const auto& row : rows) {
    EXPECT_EQ(StateWord(row.service.state), row.state);
    EXPECT_EQ(StartWord(row.service), row.start);
    EXPECT_EQ(PossibleCommands(row.service), row.commands) << row.state << row.start;
  }
  EXPECT_FALSE(ParseServiceCommand("Start") || ParseServiceCommand("delete"));
}

TEST(ServiceTexts, ReadUnmarkedUtf16CutAnywhere) {
  const std::string bytes("\r\0\n\0O\0v\0\x1b\x01\x59\x01\x3d\xd8\x00\xde\x00\xd8!\0", 20);
  for (size_t piece : {size_t{1}, size_t{3}, bytes.size()}) {
    ToolText text;
    std::string got;
    for (size_t at = 0; at < bytes.size(); at += piece)
      got += text.Add(std::string_view(bytes).substr(at, piece));
    EXPECT_EQ(got, "\r\nOvěř\U0001F600\uFFFD!") << piece;
  }
  EXPECT_EQ(ToolText().Add("10 %\r\n"), "10 %\r\n");
  EXPECT_EQ(Printable("a\nb\x80%" + std::string(300, 'x')), "a?b??" + std::string(195, 'x'));
  EXPECT_EQ(PrintableName(L"Š%1\n\u202Exe." + std::wstring(2000, L'x')),
            L"Š?1??xe." + std::wstring(992, L'x'));
  EXPECT_NE(BuildTaskXml("R&D <1>").find("<Command>R&amp;D &lt;1&gt;</Command>"), std::string::npos);
}

}  // namespace
