// What the program's start is measured against: makes and shows an empty window of the same size, then ends.
#include <windows.h>

#include "testing/bench/peak_memory_win.h"

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
  WNDCLASSW window_class = {};
  window_class.lpfnWndProc = DefWindowProcW;
  window_class.hInstance = instance;
  window_class.lpszClassName = L"VarnelEmptyWindow";
  RegisterClassW(&window_class);
  const HWND window = CreateWindowW(L"VarnelEmptyWindow", L"", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                    CW_USEDEFAULT, 1400, 900, nullptr, nullptr, instance, nullptr);
  ShowWindow(window, SW_SHOWNORMAL);
  UpdateWindow(window);
  ExitProcess(PeakMemoryKb());
}
