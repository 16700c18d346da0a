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

constexpr int kFindAttempts = 1000;  // 10 ms each

HWND Find(bool wait) {
  HWND window = nullptr;
  for (int left = wait ? kFindAttempts : 1; left > 0 && !window; --left) {
    window = FindWindowW(L"VarnelWebView2Window", nullptr);
    if (!window && wait) Sleep(10);
  }
  return window;
}

json Describe(HWND window) {
  wchar_t title[256] = L"";
  GetWindowTextW(window, title, 256);
  RECT outer{}, inner{};
  GetWindowRect(window, &outer);
  GetClientRect(window, &inner);
  return {{"found", true},
          {"title", WideToUtf8(title)},
          {"style", GetWindowLongPtrW(window, GWL_STYLE) & 0xFFFFFFFF},
          {"visible", IsWindowVisible(window) != FALSE},
          {"classStyle", GetClassLongPtrW(window, GCL_STYLE)},
          {"left", outer.left},
          {"top", outer.top},
          {"width", outer.right - outer.left},
          {"height", outer.bottom - outer.top},
          {"clientWidth", inner.right},
          {"clientHeight", inner.bottom}};
}

DWORD ProcessOf(HWND window) {
  DWORD process_id = 0;
  GetWindowThreadProcessId(window, &process_id);
  return process_id;
}

// Sends a message whose LPARAM points to a rectangle, which must be in the memory of the window's
// process.
void SendRect(HWND window, UINT message, WPARAM wparam, const RECT& rect) {
  const Owned<KernelHandleKind> process(
      OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_WRITE, FALSE, ProcessOf(window)));
  void* there = VirtualAllocEx(process.get(), nullptr, sizeof rect, MEM_COMMIT, PAGE_READWRITE);
  if (there && WriteProcessMemory(process.get(), there, &rect, sizeof rect, nullptr))
    SendMessageW(window, message, wparam, reinterpret_cast<LPARAM>(there));
}

void Step(HWND window, const std::string& word, json& answer) {
  long long a = 0, b = 0;
  int x = 0, y = 0;
  unsigned message = 0;
  if (std::sscanf(word.c_str(), "send:%u,%lld,%lld", &message, &a, &b) == 3) {
    answer["results"].push_back(
        SendMessageW(window, message, static_cast<WPARAM>(a), static_cast<LPARAM>(b)));
  } else if (std::sscanf(word.c_str(), "resize:%d,%d", &x, &y) == 2) {
    SetWindowPos(window, nullptr, 0, 0, x, y, SWP_NOMOVE | SWP_NOZORDER);
  } else if (std::sscanf(word.c_str(), "move:%d,%d", &x, &y) == 2) {
    SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  } else if (RECT rect{}; std::sscanf(word.c_str(), "dpi:%ld,%ld,%ld,%ld", &rect.left, &rect.top, &rect.right,
                                      &rect.bottom) == 4) {
    rect.right += rect.left;
    rect.bottom += rect.top;
    SendRect(window, WM_DPICHANGED, MAKEWPARAM(144, 144), rect);
  } else if (word == "wait_exit") {
    DWORD code = 0;
    const Owned<KernelHandleKind> process(
        OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, ProcessOf(window)));
    WaitForSingleObject(process.get(), 10'000);
    GetExitCodeProcess(process.get(), &code);
    answer["exitCode"] = code;
  }
}

}  // namespace

int main(int argc, char** argv) {
  SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);  // display pixels
  const HWND window = Find(argc > 1);
  if (!window) {
    std::cout << R"({"found":false})" << std::endl;
    return argc > 1 ? 1 : 0;
  }
  json answer{{"results", json::array()}};
  for (int i = 1; i < argc; ++i) Step(window, argv[i], answer);
  if (IsWindow(window)) answer.update(Describe(window));
  std::cout << answer.dump() << std::endl;
  return 0;
}
