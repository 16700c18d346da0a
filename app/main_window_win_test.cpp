#include "app/main_window_win.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "app/app_fixture_win.h"
#include "testing/message_box_win.h"

namespace {

constexpr wchar_t kClassName[] = L"VarnelWebView2Window";

using MainWindow = WindowTest;

}  // namespace

TEST_F(MainWindow, HasItsClass) {
  WNDCLASSEXW window_class = {};
  window_class.cbSize = sizeof(window_class);
  ASSERT_TRUE(GetClassInfoExW(GetModuleHandleW(nullptr), kClassName, &window_class));
  EXPECT_EQ(window_class.hIcon, State().large_icon);
  EXPECT_EQ(window_class.hIconSm, State().blank_small_icon);
  EXPECT_EQ(window_class.hCursor, LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)));
  EXPECT_EQ(reinterpret_cast<ULONG_PTR>(window_class.hbrBackground), 6u);
  EXPECT_EQ(GetMenu(State().main_window), nullptr);
}

TEST_F(MainWindow, ShowsABlankSmallIcon) {
  constexpr COLORREF kBackground = RGB(200, 30, 90);
  const HDC screen = GetDC(nullptr);
  const HDC canvas = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, 16, 16);
  SelectObject(canvas, bitmap);
  auto painted = [&](HICON icon) {
    int changed = 0;
    for (int i = 0; i < 256; ++i) SetPixel(canvas, i % 16, i / 16, kBackground);
    DrawIconEx(canvas, 0, 0, icon, 16, 16, 0, nullptr, DI_NORMAL);
    for (int i = 0; i < 256; ++i) changed += GetPixel(canvas, i % 16, i / 16) != kBackground;
    return changed;
  };
  ASSERT_TRUE(State().blank_small_icon);
  EXPECT_EQ(painted(State().blank_small_icon), 0);
  EXPECT_GT(painted(State().large_icon), 0);
  DeleteDC(canvas);
  DeleteObject(bitmap);
  ReleaseDC(nullptr, screen);
}

TEST_F(MainWindow, GivesItsIconsToWhoeverAsks) {
  auto icon = [](WPARAM kind) { return reinterpret_cast<HICON>(Send(WM_GETICON, kind)); };
  const HICON large_icon = State().large_icon;
  const HICON small_icon = State().small_icon;
  ASSERT_TRUE(large_icon && small_icon && large_icon != small_icon);
  EXPECT_EQ(icon(ICON_SMALL), small_icon);
  EXPECT_EQ(icon(ICON_SMALL2), small_icon);
  EXPECT_EQ(icon(ICON_BIG), large_icon);
  EXPECT_EQ(icon(3), nullptr);
  State().small_icon = nullptr;
  EXPECT_EQ(icon(ICON_SMALL), large_icon);
  State().large_icon = nullptr;
  EXPECT_EQ(icon(ICON_SMALL2), nullptr);
  EXPECT_EQ(icon(ICON_BIG), nullptr);
  State().large_icon = large_icon;
  State().small_icon = small_icon;
}

TEST_F(MainWindow, TreatsTheIconAreaAsCaption) {
  const HWND window = State().main_window;
  RECT rect = {};
  GetWindowRect(window, &rect);
  int icon_points = 0;
  for (int y = rect.top; y < rect.top + 40; y += 2) {
    for (int x = rect.left; x < rect.left + 60; x += 2) {
      const LPARAM point = MAKELPARAM(x, y);
      const LRESULT system_answer = DefWindowProcW(window, WM_NCHITTEST, 0, point);
      icon_points += system_answer == HTSYSMENU;
      ASSERT_EQ(Send(WM_NCHITTEST, 0, point), system_answer == HTSYSMENU ? HTCAPTION : system_answer);
    }
  }
  EXPECT_GT(icon_points, 0);

  // The system's answer to a double click on the icon is to close the window.
  const LPARAM on_icon = MAKELPARAM(rect.left + 12, rect.top + 12);
  Send(WM_NCLBUTTONDBLCLK, HTSYSMENU, on_icon);
  EXPECT_TRUE(IsZoomed(window));
  Send(WM_NCLBUTTONDBLCLK, HTSYSMENU, on_icon);
  EXPECT_FALSE(IsZoomed(window));
  EXPECT_FALSE(Pump());
}

TEST_F(MainWindow, LeavesOtherCommandsToTheSystem) {
  Send(WM_SYSCOMMAND, SC_MINIMIZE);
  EXPECT_TRUE(IsIconic(State().main_window));
  Send(WM_SYSCOMMAND, SC_RESTORE);
  EXPECT_FALSE(IsIconic(State().main_window));
}

TEST_F(MainWindow, LoopEndsWithTheCodeOfTheQuit) {
  PostQuitMessage(7);
  EXPECT_EQ(RunMessageLoop(), 7);
}

TEST_F(MainWindow, SaysWhenItsClassCannotBeRegistered) {
  const HWND window = State().main_window;
  MessageBoxCloser box(L"Varnel");
  EXPECT_FALSE(CreateMainWindow(GetModuleHandleW(nullptr), SW_HIDE)) << "the class exists already";
  EXPECT_EQ(box.Text(), L"Call to RegisterClassEx failed!");
  EXPECT_EQ(State().main_window, window);
}
