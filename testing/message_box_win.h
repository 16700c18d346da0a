#pragma once

#include <windows.h>

#include <string>
#include <thread>

// Waits on another thread for a message box of this process with the given title, keeps its text and closes
// it.
class MessageBoxCloser {
 public:
  explicit MessageBoxCloser(std::wstring title) : thread_([this, title = std::move(title)] { Run(title); }) {}
  ~MessageBoxCloser() {
    if (thread_.joinable()) thread_.join();
  }
  MessageBoxCloser(const MessageBoxCloser&) = delete;
  MessageBoxCloser& operator=(const MessageBoxCloser&) = delete;

  // The box's text; empty when none came within ten seconds.
  std::wstring Text() {
    thread_.join();
    return text_;
  }

 private:
  static constexpr int kTextControl = 0xFFFF;

  void Run(const std::wstring& title) {
    for (int attempt = 0; attempt < 200; ++attempt, Sleep(50)) {
      const HWND box = FindWindowW(L"#32770", title.c_str());
      DWORD process = 0;
      GetWindowThreadProcessId(box, &process);
      if (!box || process != GetCurrentProcessId()) continue;
      wchar_t text[256] = {};
      GetDlgItemTextW(box, kTextControl, text, 256);
      text_ = text;
      if (!text_.empty() && PostMessageW(box, WM_CLOSE, 0, 0)) return;
    }
  }

  std::wstring text_;
  std::thread thread_;  // last: it uses the members above
};
