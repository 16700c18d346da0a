#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include <gtest/gtest.h>

#include "base/handle_win.h"
#include "net/dev_services_win.h"
#include "net/environment_win.h"
#include "net/hosts_file_win.h"
#include "net/pnp_devices_win.h"
#include "net/ports_win.h"
#include "testing/handle_count_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/registry_sandbox_win.h"
#include "testing/service_action_win.h"
#include "testing/stand_ins/tool_copy_win.h"
#include "testing/temp_folder_win.h"

namespace {

using nlohmann::json;

constexpr wchar_t kUser[] = L"Environment";
constexpr wchar_t kMachine[] = L"System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr wchar_t kHosts[] = L"C:\\Windows\\System32\\drivers\\etc\\hosts";

// What `body` posts.
template <typename Body>
std::vector<std::string> Posted(Body body) {
  TakePostedTexts();
  body();
  return TakePostedTexts();
}

std::string FailedReply(const char* type) {
  return json{{"type", type}, {"success", false}, {"requestId", 7}}.dump();
}

// Top-level window, as every program has one, that counts the news about the environment.
class BroadcastListener {
 public:
  BroadcastListener() {
    WNDCLASSW window_class = {};
    window_class.lpfnWndProc = Receive;
    window_class.hInstance = GetModuleHandleW(nullptr);
    window_class.lpszClassName = L"VarnelTestListener";
    RegisterClassW(&window_class);
    window_ = CreateWindowExW(0, window_class.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                              nullptr, window_class.hInstance, nullptr);
    EXPECT_NE(window_, nullptr);
    count = 0;
  }
  ~BroadcastListener() { DestroyWindow(window_); }
  static inline int count = 0;

 private:
  static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_SETTINGCHANGE && wparam == 0 && lparam != 0 &&
        std::wstring(reinterpret_cast<const wchar_t*>(lparam)) == L"Environment")
      ++count;
    return DefWindowProcW(window, message, wparam, lparam);
  }
  HWND window_;
};

std::string ReadFileBytes(const wchar_t* path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFileBytes(const wchar_t* path, const std::string& bytes) {
  std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
}

struct HostsBackup {
  std::string bytes = ReadFileBytes(kHosts);
  ~HostsBackup() { WriteFileBytes(kHosts, bytes); }
};

}  // namespace

TEST(ReadEnvVariables, ListsEveryValueThatFits) {
  const RegistrySandbox registry;
  const std::wstring longest(16382, L'x');  // with its NUL 32766 bytes
  const struct {
    std::wstring name;
    RegistryData data;
    std::optional<std::wstring> value;  // nothing: left out
  } cases[] = {
      {L"Čeština", RegistryText(L"žluť"), L"žluť"},
      {L"EXPAND", RegistryText(L"%Path%;x", REG_EXPAND_SZ), L"%Path%;x"},
      {L"EMPTY", RegistryText(L""), L""},
      {L"NUMBER", {REG_DWORD, "abcd"}, L""},
      {L"LIST", RegistryText(L"a", REG_MULTI_SZ), L""},
      {std::wstring(300, L'N'), RegistryText(L"long name"), L"long name"},
      {L"FITS", RegistryText(longest), longest},
      {L"LONG", RegistryText(longest + L"x"), {}},
      {L"ZZZ after these", RegistryText(L"z"), L"z"},
  };
  size_t listed = 0;
  for (const auto& c : cases) SetRegistryData(HKEY_LOCAL_MACHINE, kMachine, c.name, c.data);
  const EnvVariables variables = ReadEnvVariables(HKEY_LOCAL_MACHINE, kMachine);
  for (const auto& c : cases) {
    const auto found = std::ranges::find(variables, c.name, &EnvVariables::value_type::first);
    ASSERT_EQ(found != variables.end(), c.value.has_value()) << c.name;
    if (!c.value) continue;
    ++listed;
    EXPECT_EQ(found->second, *c.value) << c.name;
  }
  EXPECT_EQ(variables.size(), listed);
  EXPECT_TRUE(ReadEnvVariables(HKEY_LOCAL_MACHINE, L"Software\\No such key").empty());
}

TEST(WriteEnvVariable, StoresExpandableTextAndTellsEveryWindow) {
  const RegistrySandbox registry;
  const BroadcastListener listener;
  auto write = [](const std::wstring& path, const std::wstring& name, const wchar_t* value, bool is_delete) {
    return WriteEnvVariable(HKEY_CURRENT_USER, path, name, value, is_delete);
  };
  const int handles = HandleCount();
  EXPECT_TRUE(write(kUser, L"VARNEL_Ž", L"C:\\Tools\\žluť", false)) << "creates the key";
  EXPECT_EQ(GetRegistryData(HKEY_CURRENT_USER, kUser, L"VARNEL_Ž"),
            RegistryText(L"C:\\Tools\\žluť", REG_EXPAND_SZ));
  EXPECT_EQ(listener.count, 1);
  EXPECT_TRUE(write(kUser, L"VARNEL_Ž", L"", false));
  EXPECT_EQ(GetRegistryData(HKEY_CURRENT_USER, kUser, L"VARNEL_Ž"), RegistryText(L"", REG_EXPAND_SZ));
  EXPECT_TRUE(write(kUser, L"VARNEL_Ž", L"", true));
  EXPECT_EQ(GetRegistryData(HKEY_CURRENT_USER, kUser, L"VARNEL_Ž"), RegistryData{});
  EXPECT_EQ(listener.count, 3);
  EXPECT_TRUE(write(kUser, L"VARNEL_Ž", L"", true)) << "there was none";
  EXPECT_EQ(listener.count, 4);

  EXPECT_FALSE(write(std::wstring(300, L'x'), L"a", L"b", false));
  EXPECT_FALSE(write(kUser, std::wstring(17000, L'n'), L"b", false));
  EXPECT_EQ(listener.count, 4) << "nothing was changed";
  EXPECT_EQ(HandleCount(), handles);
}

TEST(GetEnvVariables, ListsBothWhateverTheirNames) {
  const RegistrySandbox registry;
  SetRegistryData(HKEY_CURRENT_USER, kUser, L"prázdná", {REG_DWORD, "abcd"});
  SetRegistryData(HKEY_CURRENT_USER, kUser, L"TEMP",
                  RegistryText(L"%USERPROFILE%\\AppData\\Local\\Temp", REG_EXPAND_SZ));
  SetRegistryData(HKEY_CURRENT_USER, kUser, L"Čeština", RegistryText(L"žluťoučký"));
  SetRegistryData(HKEY_LOCAL_MACHINE, kMachine, L"OS", RegistryText(L"Windows_NT"));
  SetRegistryData(HKEY_LOCAL_MACHINE, kMachine, L"Path",
                  RegistryText(L"%SystemRoot%\\system32;%SystemRoot%", REG_EXPAND_SZ));
  EXPECT_EQ(Posted([] { getEnvVariables(7); }), std::vector{RecordedMessage("getEnvVariables")});

  const std::wstring half_surrogate = {L'V', wchar_t{0xDC00}};  // legal in the registry
  SetRegistryData(HKEY_CURRENT_USER, kUser, half_surrogate, RegistryText(half_surrogate));
  EXPECT_EQ(json::parse(Posted([] { getEnvVariables(7); }).at(0))["user"]["V\xEF\xBF\xBD"], "V\xEF\xBF\xBD");
}

TEST(SaveEnvVariable, WritesTheUsersHere) {
  const RegistrySandbox registry;
  const StandInService service(StandInService::Answers{});
  const auto stored = [] { return GetRegistryData(HKEY_CURRENT_USER, kUser, L"VarnelTest ď"); };
  EXPECT_EQ(Posted([] { saveEnvVariable(7, "user", "VarnelTest ď", "%TEMP%;ž", false); }),
            std::vector{RecordedMessage("saveEnvVariable")});
  EXPECT_EQ(stored(), RegistryText(L"%TEMP%;ž", REG_EXPAND_SZ));
  EXPECT_EQ(Posted([] { saveEnvVariable(7, "user", "VarnelTest ď", "", true); }),
            std::vector{RecordedMessage("saveEnvVariable")});
  EXPECT_EQ(stored(), RegistryData{});
  EXPECT_EQ(service.connections(), 0);
}

TEST(GetHostsFile, ReadsTheFileByteForByte) {
  if (!IsWine()) GTEST_SKIP() << "writes the hosts file";
  const HostsBackup backup;
  WriteFileBytes(kHosts, "#\t127.0.0.1       localhost\r\n192.0.2.1 brod.example # příklad\nlast line");
  EXPECT_EQ(Posted([] { getHostsFile(7); }), std::vector{RecordedMessage("getHostsFile")});
  WriteFileBytes(kHosts, "");
  EXPECT_EQ(json::parse(Posted([] { getHostsFile(7); }).at(0)),
            (json{{"type", "getHostsFile"}, {"success", true}, {"requestId", 7}, {"content", ""}}));
  WriteFileBytes(kHosts, "# p\xF8\xEDklad\r\n");  // code page 1250
  const json ansi = json::parse(Posted([] { getHostsFile(7); }).at(0));
  EXPECT_EQ(ansi["success"], true);
  EXPECT_TRUE(ansi["content"].get<std::string>().ends_with("klad\r\n"));
  const std::string block_list(3'000'000, '0');
  WriteFileBytes(kHosts, block_list);
  EXPECT_EQ(ReadHostsFile(), block_list);
}

TEST(NetActions, AreDoneByTheServiceWhereRightsAreNeeded) {
  if (!IsWine()) GTEST_SKIP() << "locks the hosts file";
  const FileHandle lock(CreateFileW(kHosts, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(lock) << "so that it can only be read by the service";
  const json yes = {{"success", true}};
  const json services = {
      {{"name", "Peat DB"}, {"service_type", "peatdb"}, {"status", "stopped"}, {"commands", {"start"}}}};
  const ServiceAction actions[] = {
      {[] { getHostsFile(7); },
       "get_hosts_file",
       "{}",
       {{"success", true}, {"content", "a\r\nž"}},
       R"({"content":"a\r\nž","requestId":7,"success":true,"type":"getHostsFile"})",
       R"({"content":"","requestId":7,"success":false,"type":"getHostsFile"})"},
      {[] { saveHostsFile(7, "a\r\nž"); }, "save_hosts_file", R"({"content":"a\r\nž"})", yes,
       RecordedMessage("saveHostsFile"), FailedReply("saveHostsFile")},
      {[] { saveEnvVariable(7, "system", "N", "v", true); }, "save_system_env",
       R"({"is_delete":true,"name":"N","value":"v"})", yes, RecordedMessage("saveEnvVariable"),
       FailedReply("saveEnvVariable")},
      {[] { saveEnvVariable(7, "USER", "N", "", false); }, "save_system_env",
       R"({"is_delete":false,"name":"N","value":""})", yes, RecordedMessage("saveEnvVariable"),
       FailedReply("saveEnvVariable")},
      {[] { getDevServices(7); },
       "get_dev_services",
       "{}",
       {{"success", true}, {"services", services}},
       RecordedMessage("getDevServices"),
       R"({"requestId":7,"services":[],"success":false,"type":"getDevServices"})"},
      {[] { controlDevService(7, "peatdb", "start"); }, "control_dev_service",
       R"({"command":"start","service_type":"peatdb"})", yes, RecordedMessage("controlDevService"),
       FailedReply("controlDevService")},
  };
  for (const ServiceAction& action : actions) ExpectServiceAction(action);
}

// Stands in for the command interpreter, which is what the program starts.
TEST(GetOpenPorts, ReadsWhatNetstatPrints) {
  {
    const ToolCopy interpreter(
        L"cmd",
        {{"steps", {WriteStep("Aktivn\xA1 p\xFDipojen\xA1\r\n TCP [::1]:8080 [::]:0 LISTENING 5120\r\n")}},
         {"exit", 1}});
    EXPECT_EQ(
        Posted([] { getOpenPorts(7); }),
        std::vector<std::string>{
            R"({"ports":[{"local":"[::1]:8080","pid":"5120","port":"8080","proto":"TCP","state":"LISTENING"}],)"
            R"("requestId":7,"success":true,"type":"getOpenPorts"})"});
    EXPECT_EQ(interpreter.CommandLines(), std::vector<std::string>{"cmd.exe /c netstat -ano"});
  }
  const ToolCopy broken(L"cmd", nullptr);
  EXPECT_EQ(Posted([] { getOpenPorts(7); }),
            std::vector<std::string>{R"({"ports":[],"requestId":7,"success":true,"type":"getOpenPorts"})"});
}

TEST(GetPnpDevices, AsksPowerShell) {
  const char* none = R"({"devices":[],"requestId":7,"success":true,"type":"getPnpDevices"})";
  {
    const char* output = R"([{"FriendlyName":"Zvuková karta Peat®","Class":"MEDIA","Status":"OK"}])";
    const ToolCopy powershell(L"powershell", {{"steps", {WriteStep(output)}}});
    EXPECT_EQ(json::parse(Posted([] { getPnpDevices(7); }).at(0))["devices"], json::parse(output));
    EXPECT_EQ(
        powershell.CommandLines(),
        std::vector<std::string>{
            "powershell -NoProfile -ExecutionPolicy Bypass -Command \"[Console]::OutputEncoding = "
            "[System.Text.Encoding]::UTF8; $OutputEncoding = [System.Text.Encoding]::UTF8; Get-CimInstance "
            "Win32_PnPSignedDriver | Where-Object { $_.DeviceName } | Select-Object "
            "@{N='FriendlyName';E={$_.DeviceName}}, @{N='Class';E={$_.DeviceClass}}, "
            "@{N='Status';E={'OK'}} | ConvertTo-Json -Compress\""});
  }
  {
    const ToolCopy silent(L"powershell", {{"exit", 1}});
    EXPECT_EQ(Posted([] { getPnpDevices(7); }), std::vector<std::string>{none});
  }
  const ToolCopy broken(L"powershell", nullptr);
  EXPECT_EQ(Posted([] { getPnpDevices(7); }), std::vector<std::string>{none});
}
