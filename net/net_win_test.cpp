#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/handle_win.h"
#include "net/dev_services_win.h"
#include "net/environment_win.h"
#include "net/hosts_file_win.h"
#include "net/pnp_devices_win.h"
#include "net/ports_win.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/pipe_server_win.h"
#include "testing/temp_folder_win.h"

namespace {

using nlohmann::json;

constexpr wchar_t kSandbox[] = L"Software\\VarnelTestEnvironment";
constexpr wchar_t kHosts[] = L"C:\\Windows\\System32\\drivers\\etc\\hosts";
const std::string kNotice = R"({"type":"show_service_error_modal"})";

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

// Text and type of a value; type REG_NONE when there is none.
std::pair<std::wstring, DWORD> ReadValue(const wchar_t* path, const wchar_t* name) {
  wchar_t data[1024] = {};
  DWORD size_bytes = sizeof(data), type = REG_NONE;
  const LSTATUS status =
      RegGetValueW(HKEY_CURRENT_USER, path, name, RRF_RT_ANY | RRF_NOEXPAND, &type, data, &size_bytes);
  return status == ERROR_SUCCESS ? std::pair(std::wstring(data), type)
                                 : std::pair(std::wstring(), DWORD{REG_NONE});
}

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
  ASSERT_TRUE(IsWine());
  RegistryKey key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kSandbox, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(),
                            nullptr),
            0);
  auto set = [&](const std::wstring& name, DWORD type, const std::wstring& text, size_t more_bytes) {
    EXPECT_EQ(RegSetValueExW(key.get(), name.c_str(), 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>(text.size() * sizeof(wchar_t) + more_bytes)),
              0);
  };
  set(L"Čeština", REG_SZ, L"žluť", 2);
  set(L"EXPAND", REG_EXPAND_SZ, L"%Path%;x", 2);
  set(L"NO_NUL", REG_SZ, L"text", 0);
  set(L"EMPTY", REG_SZ, L"", 2);
  set(L"NO_DATA", REG_SZ, L"", 0);
  set(L"NUMBER", REG_DWORD, L"ab", 0);
  set(L"LIST", REG_MULTI_SZ, L"a", 2);
  set(std::wstring(300, L'N'), REG_SZ, L"long name", 2);
  const std::wstring longest(16382, L'x');  // with its NUL 32766 bytes
  set(L"FITS", REG_SZ, longest, 2);
  set(L"LONG", REG_SZ, longest + L"x", 2);
  EnvVariables variables = ReadEnvVariables(HKEY_CURRENT_USER, kSandbox);
  RegDeleteTreeW(HKEY_CURRENT_USER, kSandbox);
  std::sort(variables.begin(), variables.end());
  EXPECT_EQ(variables, (EnvVariables{{L"EMPTY", L""},
                                     {L"EXPAND", L"%Path%;x"},
                                     {L"FITS", longest},
                                     {L"LIST", L""},
                                     {std::wstring(300, L'N'), L"long name"},
                                     {L"NO_DATA", L""},
                                     {L"NO_NUL", L"text"},
                                     {L"NUMBER", L""},
                                     {L"Čeština", L"žluť"}}));
  EXPECT_TRUE(ReadEnvVariables(HKEY_CURRENT_USER, L"Software\\VarnelNoSuchKey").empty());
}

TEST(WriteEnvVariable, StoresExpandableTextAndTellsEveryWindow) {
  ASSERT_TRUE(IsWine());
  const BroadcastListener listener;
  RegDeleteTreeW(HKEY_CURRENT_USER, kSandbox);
  const std::pair text(std::wstring(L"C:\\Tools\\žluť"), DWORD{REG_EXPAND_SZ});
  EXPECT_TRUE(WriteEnvVariable(HKEY_CURRENT_USER, kSandbox, L"VARNEL_Ž", text.first, false))
      << "creates the key";
  EXPECT_EQ(ReadValue(kSandbox, L"VARNEL_Ž"), text);
  EXPECT_EQ(listener.count, 1);
  EXPECT_TRUE(WriteEnvVariable(HKEY_CURRENT_USER, kSandbox, L"VARNEL_Ž", L"", true));
  EXPECT_EQ(ReadValue(kSandbox, L"VARNEL_Ž").second, DWORD{REG_NONE});
  EXPECT_EQ(listener.count, 2);
  EXPECT_TRUE(WriteEnvVariable(HKEY_CURRENT_USER, kSandbox, L"VARNEL_Ž", L"", true)) << "there was none";
  EXPECT_EQ(listener.count, 3);
  RegDeleteTreeW(HKEY_CURRENT_USER, kSandbox);

  EXPECT_FALSE(WriteEnvVariable(HKEY_CURRENT_USER, std::wstring(300, L'x'), L"a", L"b", false));
  EXPECT_FALSE(WriteEnvVariable(HKEY_CURRENT_USER, kSandbox, std::wstring(17000, L'n'), L"b", false));
  RegDeleteTreeW(HKEY_CURRENT_USER, kSandbox);
  EXPECT_EQ(listener.count, 3) << "nothing was changed";
}

TEST(SaveEnvVariable, UserIsWrittenHereAndListed) {
  ASSERT_TRUE(IsWine());
  StandInService service(StandInService::Answers{});
  auto listed = [] {
    const json message = json::parse(Posted([] { getEnvVariables(7); }).at(0));
    EXPECT_TRUE(message["system"].contains("OS")) << "every system has it";
    return message["user"].value("VarnelTest ď", "absent");
  };
  EXPECT_EQ(Posted([] { saveEnvVariable(7, "user", "VarnelTest ď", "%TEMP%;ž", false); }),
            std::vector{RecordedMessage("saveEnvVariable")});
  EXPECT_EQ(ReadValue(L"Environment", L"VarnelTest ď"),
            std::pair(std::wstring(L"%TEMP%;ž"), DWORD{REG_EXPAND_SZ}));
  EXPECT_EQ(listed(), "%TEMP%;ž");
  EXPECT_EQ(Posted([] { saveEnvVariable(7, "user", "VarnelTest ď", "", true); }),
            std::vector{RecordedMessage("saveEnvVariable")});
  EXPECT_EQ(listed(), "absent");
  EXPECT_EQ(service.connections(), 0);
}

TEST(GetEnvVariables, SurvivesNamesThatAreNoText) {
  ASSERT_TRUE(IsWine());
  const std::wstring odd = {L'V', wchar_t{0xDC00}};
  ASSERT_TRUE(WriteEnvVariable(HKEY_CURRENT_USER, L"Environment", odd, odd, false));
  const std::vector<std::string> posted = Posted([] { getEnvVariables(7); });
  EXPECT_TRUE(WriteEnvVariable(HKEY_CURRENT_USER, L"Environment", odd, L"", true));
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_EQ(json::parse(posted[0])["user"]["V\xEF\xBF\xBD"], "V\xEF\xBF\xBD");
}

TEST(GetHostsFile, ReadsTheFileByteForByte) {
  ASSERT_TRUE(IsWine());
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

TEST(GetHostsFile, AsksTheServiceForAFileThatCannotBeOpened) {
  ASSERT_TRUE(IsWine());
  const FileHandle lock(CreateFileW(kHosts, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(lock);
  json failed = {{"type", "getHostsFile"}, {"success", false}, {"requestId", 7}, {"content", ""}};
  EXPECT_EQ(Posted([] { getHostsFile(7); }), (std::vector{kNotice, failed.dump()}));
  StandInService service({{"get_hosts_file", Reply({{"success", true}, {"content", "a\r\nž"}})}});
  failed["success"] = true;
  failed["content"] = "a\r\nž";
  EXPECT_EQ(Posted([] { getHostsFile(7); }), std::vector{failed.dump()});
  EXPECT_EQ(service.requests(), std::vector<std::string>{"{\"action\":\"get_hosts_file\",\"data\":{}}\n"});
}

TEST(ServiceActions, SendTheirFieldsAndTakeTheOutcome) {
  struct {
    const char* reply_type;
    const char* pipe_action;
    void (*run)();
    std::string request_data;
  } cases[] = {
      {"saveHostsFile", "save_hosts_file", [] { saveHostsFile(7, "a\r\nž"); }, R"({"content":"a\r\nž"})"},
      {"saveEnvVariable", "save_system_env", [] { saveEnvVariable(7, "system", "N", "v", true); },
       R"({"is_delete":true,"name":"N","value":"v"})"},
      {"saveEnvVariable", "save_system_env", [] { saveEnvVariable(7, "USER", "N", "", false); },
       R"({"is_delete":false,"name":"N","value":""})"},
      {"controlDevService", "control_dev_service", [] { controlDevService(7, "peatdb", "start"); },
       R"({"command":"start","service_type":"peatdb"})"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Posted(c.run), (std::vector{kNotice, FailedReply(c.reply_type)})) << c.pipe_action;
    {
      StandInService service({{c.pipe_action, Reply({{"success", true}})}});
      EXPECT_EQ(Posted(c.run), std::vector{RecordedMessage(c.reply_type)}) << c.pipe_action;
      EXPECT_EQ(service.requests(), std::vector<std::string>{std::string("{\"action\":\"") + c.pipe_action +
                                                             "\",\"data\":" + c.request_data + "}\n"});
    }
    StandInService service({{c.pipe_action, Reply({{"ok", true}})}});
    EXPECT_EQ(Posted(c.run), std::vector{FailedReply(c.reply_type)}) << "an answer without success";
  }
}

TEST(GetDevServices, HandsOnWhatTheServiceLists) {
  json failed = json::parse(FailedReply("getDevServices"));
  failed["services"] = json::array();
  EXPECT_EQ(Posted([] { getDevServices(7); }), (std::vector{kNotice, failed.dump()}));
  const json services = {
      {{"name", "Peat DB"}, {"service_type", "peatdb"}, {"status", "stopped"}, {"commands", {"start"}}}};
  StandInService service({{"get_dev_services", Reply({{"success", true}, {"services", services}})}});
  EXPECT_EQ(Posted([] { getDevServices(7); }), std::vector{RecordedMessage("getDevServices")});
  EXPECT_EQ(service.requests(), std::vector<std::string>{"{\"action\":\"get_dev_services\",\"data\":{}}\n"});
}

// The command interpreter looks into the current folder first, so a script there stands in for netstat.
TEST(GetOpenPorts, ReadsWhatNetstatPrints) {
  const auto start_folder = std::filesystem::current_path();
  const TempFolder folder;
  std::filesystem::current_path(folder.path);
  std::ofstream("netstat.bat") << "@if \"%*\"==\"-ano\" type table.txt\n";
  std::ofstream("table.txt", std::ios::binary)
      << "\r\nAktivn\xA1 p\xFDipojen\xA1\r\n\r\n"
         "  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       1016\r\n"
         "  TCP    127.0.0.1:5354         0.0.0.0:0              LISTENING       3644\r\n"
         "  TCP    [::]:445               [::]:0                 LISTENING       4\r\n"
         "  TCP    [::1]:8080             [::]:0                 LISTENING       5120\r\n";
  const std::vector<std::string> posted = Posted([] { getOpenPorts(7); });
  std::filesystem::current_path(start_folder);
  EXPECT_EQ(posted, std::vector{RecordedMessage("getOpenPorts")});
}

TEST(GetPnpDevices, HasNoDevicesWhenPowerShellPrintsNothing) {
  ASSERT_TRUE(IsWine());  // whose PowerShell is an empty shell
  EXPECT_EQ(
      Posted([] { getPnpDevices(7); }),
      std::vector<std::string>{R"({"devices":[],"requestId":7,"success":true,"type":"getPnpDevices"})"});
}
