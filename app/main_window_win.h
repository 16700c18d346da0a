#pragma once

#include <windows.h>
#include <wrl/client.h>

#include "app/webview2.h"

// Replies on their way from any thread to the page: LPARAM is a std::wstring* with the JSON text, made by
// `new` and owned by the message.
inline constexpr UINT WM_POST_JSON = WM_USER + 1;

// What the main window, the browser host and the bridge share. Each value is written once, on the UI thread
// while the program starts.
struct AppState {
  HWND main_window = nullptr;
  HICON large_icon = nullptr;
  HICON small_icon = nullptr;        // only for whoever asks with WM_GETICON
  HICON blank_small_icon = nullptr;  // what the title bar shows
  Microsoft::WRL::ComPtr<ICoreWebView2Environment> environment;
  Microsoft::WRL::ComPtr<ICoreWebView2Controller> controller;
  Microsoft::WRL::ComPtr<ICoreWebView2> view;
};

// The one state of this process. It is never destroyed: workers may post until the process ends.
AppState& State();

// Loads the icons, makes `MainWindow` and shows it (RegisterClassExW, CreateWindowExW,
// DwmSetWindowAttribute). False after a message box when the class or the window cannot be made.
bool CreateMainWindow(HINSTANCE instance, int show_command);

// Gives the browser control, once it is there, the window's client area in pixels, and lets the page know
// whether the window is minimized (put_Bounds, put_IsVisible). On the UI thread.
void FitBrowser();

// Hands the keyboard focus on to the browser control if the window itself has it and is not minimized
// (MoveFocus). On the UI thread.
void FocusBrowser();

// Runs until WM_QUIT and returns its exit code.
int RunMessageLoop();
