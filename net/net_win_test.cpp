#include <windows.h>

#include <string>

#include <gtest/gtest.h>

#include "net/environment_win.h"
#include "testing/registry_sandbox_win.h"

namespace {

// A top-level window, such as every program has, that counts the notifications of a changed environment.
int g_told = 0;

LRESULT CALLBACK CountNews(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_SETTINGCHANGE && wparam == 0 && lparam != 0 &&
      std::wstring(reinterpret_cast<const wchar_t*>(lparam)) == L"Environment")
    ++g_told;
  return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace

TEST(WriteEnvVariable, NotifiesEveryWindowOfAChange) {
  const RegistrySandbox registry;
  WNDCLASSW window_class = {};
  window_class.lpfnWndProc = CountNews;
  window_class.lpszClassName = L"VarnelTestListener";
  RegisterClassW(&window_class);
  const HWND window = CreateWindowExW(0, window_class.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 10, 10,
                                      nullptr, nullptr, nullptr, nullptr);
  ASSERT_NE(window, nullptr);
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
  DestroyWindow(window);
}
