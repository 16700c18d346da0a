// Answers dialogs as a person would: dialog_probe.exe TEXT [ID]. Waits for a dialog box that can be used and
// shows TEXT in its title or anywhere in it, prints its title and all visible texts as one JSON document, and
// presses the button ID (1: OK, Next; 2: Cancel).
#include <windows.h>

#include <iostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/text.h"

namespace {

constexpr int kAttempts = 600;  // 50 ms each

struct Dialog {
  std::string wanted;
  HWND window = nullptr;
  std::vector<std::string> texts;  // the first is the title
};

// Also of other processes' controls, which GetWindowText does not read.
std::string TextOf(HWND window) {
  wchar_t text[4096] = L"";
  SendMessageTimeoutW(window, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text), SMTO_ABORTIFHUNG, 1000,
                      nullptr);
  return WideToUtf8(text);
}

BOOL CALLBACK AddText(HWND control, LPARAM texts) {
  if (IsWindowVisible(control))
    reinterpret_cast<std::vector<std::string>*>(texts)->push_back(TextOf(control));
  return TRUE;
}

BOOL CALLBACK Examine(HWND window, LPARAM parameter) {
  auto& dialog = *reinterpret_cast<Dialog*>(parameter);
  wchar_t name[16] = L"";
  GetClassNameW(window, name, 16);
  if (std::wstring(name) != L"#32770" || !IsWindowVisible(window) || !IsWindowEnabled(window)) return TRUE;
  dialog.texts = {TextOf(window)};
  EnumChildWindows(window, AddText, reinterpret_cast<LPARAM>(&dialog.texts));
  for (const std::string& text : dialog.texts)
    if (text.find(dialog.wanted) != std::string::npos) dialog.window = window;
  return dialog.window == nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  Dialog dialog;
  dialog.wanted = argv[1];
  for (int i = 0; i < kAttempts && !dialog.window; ++i) {
    if (i > 0) Sleep(50);
    EnumWindows(Examine, reinterpret_cast<LPARAM>(&dialog));
  }
  if (!dialog.window) return 1;
  std::cout << nlohmann::json(dialog.texts).dump() << std::endl;
  if (argc > 2) {
    const int id = std::stoi(argv[2]);
    PostMessageW(dialog.window, WM_COMMAND, static_cast<WPARAM>(id),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog.window, id)));
  }
  return 0;
}
