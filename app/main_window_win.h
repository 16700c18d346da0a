#pragma once

#include <windows.h>
#include <wrl/client.h>

#include "app/webview2.h"

// Carries a reply from any thread to the page. LPARAM is a std::wstring* with the JSON text, allocated
// with `new` and owned by the message.
inline constexpr UINT WM_POST_JSON = WM_USER + 1;

// The state shared by the main window, the browser host and the bridge. Each value is written once, on
// the UI thread during program start.
struct AppState {
  HWND main_window = nullptr;
  HICON large_icon = nullptr;
  HICON small_icon = nullptr;        // returned only for WM_GETICON
  HICON blank_small_icon = nullptr;  // shown in the title bar
  Microsoft::WRL::ComPtr<ICoreWebView2Environment> environment;
  Microsoft::WRL::ComPtr<ICoreWebView2Controller> controller;
  Microsoft::WRL::ComPtr<ICoreWebView2> view;
};

// Returns the one state of this process. It is never destroyed, because workers may post until the
// process ends.
AppState& State();

// Loads the icons, creates `MainWindow` and shows it (RegisterClassExW, CreateWindowExW,
// DwmSetWindowAttribute). Returns false, after a message box, if the class or the window cannot be
// created.
bool CreateMainWindow(HINSTANCE instance, int show_command);

// Gives the browser control, if it exists, the window's client area in pixels, and tells the page
// whether the window is minimized (put_Bounds, put_IsVisible). UI thread.
void FitBrowser();

// Passes the keyboard focus on to the browser control if the window itself has it and is not minimized
// (MoveFocus). UI thread.
void FocusBrowser();

// Runs until WM_QUIT and returns its exit code.
int RunMessageLoop();
