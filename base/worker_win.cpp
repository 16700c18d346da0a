#include "base/worker.h"

#include <windows.h>
#include <process.h>

#include <cerrno>
#include <exception>
#include <memory>
#include <system_error>
#include <utility>

#include "base/handle_win.h"

namespace {

void RunGuarded(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    // Written piece by piece because there may be no memory left to join them.
    OutputDebugStringA("[Varnel Debug] Worker ended by: ");
    OutputDebugStringA(error.what());
    OutputDebugStringA("\n");
  } catch (...) {
    OutputDebugStringA("[Varnel Debug] Worker ended by an unknown exception\n");
  }
}

unsigned __stdcall ThreadBody(void* body) {
  RunGuarded(*std::unique_ptr<std::function<void()>>(static_cast<std::function<void()>*>(body)));
  return 0;
}

}  // namespace

// Does not use std::thread. If a thread ends while it is being detached, MinGW's thread library can give
// its record to two later threads. One of them then runs its body twice, and the other's body never
// runs.
void StartWorker(std::function<void()> body) {
  auto carried = std::make_unique<std::function<void()>>(std::move(body));
  const KernelHandle thread(
      reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, ThreadBody, carried.get(), 0, nullptr)));
  if (!thread) throw std::system_error(errno, std::generic_category(), "no thread for a worker");
  static_cast<void>(carried.release());  // now owned by the thread
}
