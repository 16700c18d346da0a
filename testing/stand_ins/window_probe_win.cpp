// Looks at the program's window, or drives it, as any other process can: window_probe.exe [WORD]... Each
// word is one step (listed in testing/README.md). The answer is one JSON document on standard output,
// whose "results" are those of the messages sent. Without any word, it only tells whether there is a
// window.
#include <windows.h>

#include <cstdio>
#include <iostream>
#include <string>

#include <nlohmann/json.hpp>

#include "base/handle_win.h"
#include "base/text.h"

namespace {

using nlohmann::json;

HWND Find(int attempts) {
  HWND window = FindWindowW(L"VarnelWebView2Window", nullptr);
  for (; --attempts > 0 && !window; window = FindWindowW(L"VarnelWebView2Window", nullptr)) Sleep(10);
  return window;
}

json Describe(HWND window) {
  wchar_t title[256] = L"";
  GetWindowTextW(window, title, 256);
  RECT outer{}, inner{};
  GetWindowRect(window, &outer);
  GetClientRect(window, &inner);
  return {{"title", WideToUtf8(title)},
          {"visible", IsWindowVisible(window) != FALSE},
          {"place", {outer.left, outer.top, outer.right - outer.left, outer.bottom - outer.top}},
          {"client", {inner.right, inner.bottom}}};
}

DWORD WaitForExit(HWND window) {
  DWORD process_id = 0, code = 0;
  GetWindowThreadProcessId(window, &process_id);
  const KernelHandle process(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process_id));
  WaitForSingleObject(process.get(), 10'000);
  GetExitCodeProcess(process.get(), &code);
  return code;
}

void Step(HWND window, const std::string& word, json& answer) {
  WPARAM wparam = 0;
  LPARAM lparam = 0;
  int x = 0, y = 0, width = 0, height = 0;
  UINT message = 0;
  if (std::sscanf(word.c_str(), "send:%u,%llu,%lld", &message, &wparam, &lparam) == 3)
    answer["results"].push_back(SendMessageW(window, message, wparam, lparam));
  if (std::sscanf(word.c_str(), "place:%d,%d,%d,%d", &x, &y, &width, &height) == 4)
    SetWindowPos(window, nullptr, x, y, width, height, SWP_NOZORDER);
  if (word == "wait_exit") answer["exitCode"] = WaitForExit(window);
}

}  // namespace

int main(int argc, char** argv) {
  SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);  // display pixels
  const HWND window = Find(argc > 1 ? 1000 : 1);
  json answer{{"found", window != nullptr}};
  for (int i = 1; i < argc && window; ++i) Step(window, argv[i], answer);
  if (IsWindow(window)) answer.update(Describe(window));
  std::cout << answer.dump() << std::endl;
  return argc > 1 && !window ? 1 : 0;
}
