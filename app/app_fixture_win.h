#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include "app/main_window_win.h"
#include "testing/fake_browser_win.h"

// Tests around the real main window, which the first of them makes.
class WindowTest : public testing::Test {
 protected:
  WindowTest() {
    static const bool created = CreateMainWindow(GetModuleHandleW(nullptr), SW_SHOW);
    EXPECT_TRUE(created);
    Pump();
  }
  ~WindowTest() override {
    Pump();  // what a test left in the queue must not reach the next one
    State().view.Reset();
  }

  // Runs the queue empty. True when the program was told to quit.
  static bool Pump() {
    bool quit = false;
    for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
      quit = quit || message.message == WM_QUIT;
      DispatchMessageA(&message);
    }
    return quit;
  }

  static LRESULT Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
    return SendMessageW(State().main_window, message, wparam, lparam);
  }

  FakeView view_;
};
