#include <windows.h>

#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "base/handle_win.h"
#include "net/environment_win.h"
#include "testing/recording_page.h"
#include "testing/registry_sandbox_win.h"

namespace {

int g_told = 0;

LRESULT CALLBACK CountNews(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_SETTINGCHANGE && wparam == 0 && lparam != 0 &&
      std::wstring(reinterpret_cast<const wchar_t*>(lparam)) == L"Environment")
    ++g_told;
  return DefWindowProcW(window, message, wparam, lparam);
}

// A top-level window, such as every program has, that counts the notifications of a changed environment.
class EnvironmentNews : public testing::Test {
 protected:
  EnvironmentNews() {
    g_told = 0;
    WNDCLASSW window_class = {};
    window_class.lpfnWndProc = CountNews;
    window_class.lpszClassName = L"VarnelTestListener";
    RegisterClassW(&window_class);
    window_ = CreateWindowExW(0, window_class.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                              nullptr, nullptr, nullptr);
  }
  ~EnvironmentNews() override { DestroyWindow(window_); }

  HWND window_ = nullptr;
};

TEST_F(EnvironmentNews, ReachEveryWindowAfterAChange) {
  const RegistrySandbox registry;
  ASSERT_NE(window_, nullptr);
  const struct {
    std::wstring path, name;
    bool is_delete;
    int told;  // 0: the registry refuses
  } cases[] = {{L"Environment", L"VARNEL_Ž", false, 1},
               {L"Environment", L"VARNEL_Ž", true, 1},
               {std::wstring(300, L'x'), L"a", false, 0},
               {L"Environment", std::wstring(17000, L'n'), false, 0}};
  for (const auto& c : cases) {
    g_told = 0;
    EXPECT_EQ(WriteEnvVariable(HKEY_CURRENT_USER, c.path, c.name, L"žluť", c.is_delete), c.told > 0);
    EXPECT_EQ(g_told, c.told) << c.name;
  }
}

// Stands in for the helper service, which cannot reach the user's windows: reads one request, answers it
// and ends.
void AnswerOneRequest(HANDLE pipe, std::string_view answer) {
  char request[1024];
  DWORD moved = 0;
  do {
    DisconnectNamedPipe(pipe);
    ConnectNamedPipe(pipe, nullptr);
  } while (!ReadFile(pipe, request, sizeof(request), &moved, nullptr));  // the probe sends nothing
  WriteFile(pipe, answer.data(), static_cast<DWORD>(answer.size()), &moved, nullptr);
  FlushFileBuffers(pipe);
}

TEST_F(EnvironmentNews, ComeFromTheProgramIfTheServiceMadeTheChange) {
  for (const auto& [answer, told] : {std::pair("{\"success\":true}\n", 1), {"{\"success\":false}\n", 0}}) {
    g_told = 0;
    const FileHandle pipe(CreateNamedPipeW(L"\\\\.\\pipe\\VarnelServicePipe", PIPE_ACCESS_DUPLEX,
                                           PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0, nullptr));
    ASSERT_TRUE(pipe);
    const std::jthread service([&] { AnswerOneRequest(pipe.get(), answer); });
    saveEnvVariable(7, "system", "VARNEL_TEST", "x", false);
    EXPECT_EQ(TakePostedMessages().back()["success"], told == 1);
    EXPECT_EQ(g_told, told);
  }
}

}  // namespace
