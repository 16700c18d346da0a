#include "base/worker_win.h"

#include <windows.h>

#include <exception>
#include <thread>
#include <utility>

namespace {

void RunGuarded(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    // Piece by piece: there may be no memory left to join them.
    OutputDebugStringA("[Varnel Debug] Worker ended by: ");
    OutputDebugStringA(error.what());
    OutputDebugStringA("\n");
  } catch (...) {
    OutputDebugStringA("[Varnel Debug] Worker ended by an unknown exception\n");
  }
}

}  // namespace

void StartWorker(std::function<void()> body) {
  std::thread([body = std::move(body)] { RunGuarded(body); }).detach();
}
