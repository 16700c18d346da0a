#include "base/worker_win.h"

#include <windows.h>

#include <exception>
#include <string>
#include <thread>
#include <utility>

#include "base/text.h"

namespace {

void RunGuarded(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    OutputDebugStringW((L"[Varnel Debug] Worker ended by: " + Utf8ToWide(error.what()) + L"\n").c_str());
  } catch (...) {
    OutputDebugStringW(L"[Varnel Debug] Worker ended by an unknown exception\n");
  }
}

}  // namespace

void StartWorker(std::function<void()> body) {
  std::thread([body = std::move(body)] { RunGuarded(body); }).detach();
}
