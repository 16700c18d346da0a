// Sends text to the page through the main window's message queue. See base/page.h.
#include <windows.h>

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "app/main_window_win.h"
#include "base/page.h"
#include "base/text.h"
#include "base/trace.h"

void PostJsonToJs(std::string_view json) {
  auto carried = std::make_unique<std::wstring>(Utf8ToWide(json));
  Trace(L"PostJsonToJs: calling PostMessageW...");
  // A post to no window would succeed: the text would enter the calling thread's queue and never be
  // freed.
  const HWND window = State().main_window;
  if (window && PostMessageW(window, WM_POST_JSON, 0, reinterpret_cast<LPARAM>(carried.get()))) {
    static_cast<void>(carried.release());  // now owned by the message
    Trace(L"PostMessageW queued successfully.");
    return;
  }
  const DWORD error = window ? GetLastError() : ERROR_INVALID_WINDOW_HANDLE;
  Trace(L"PostMessageW failed! Error: " + std::to_wstring(error));
}

void SendConsoleLog(std::string_view message, std::string_view style) {
  OutputDebugStringW(Utf8ToWide("[Varnel C++] " + std::string(message) + "\n").c_str());
  const nlohmann::json line = {{"type", "console_log"}, {"message", message}, {"style", style}};
  PostJsonToJs(line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}
