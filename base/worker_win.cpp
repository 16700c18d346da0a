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
    // Piece by piece: there may be no memory left to join them.
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

// Not std::thread: when a thread ends while it is being detached, MinGW's thread library can hand its record
// to two later threads, and then the body of one of them runs twice and that of the other never.
void StartWorker(std::function<void()> body) {
  auto carried = std::make_unique<std::function<void()>>(std::move(body));
  const KernelHandle thread(
      reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, ThreadBody, carried.get(), 0, nullptr)));
  if (!thread) throw std::system_error(errno, std::generic_category(), "no thread for a worker");
  static_cast<void>(carried.release());  // now owned by the thread
}
