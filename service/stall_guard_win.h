#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <utility>

#include "base/file_walk_win.h"
#include "base/handle_win.h"

// While it lives, nothing inside the system can block a walk in the calling thread forever
// (CancelSynchronousIo). Windows waits for the holder of an oplock on a file to be opened or deleted, and
// for a program that provides what a folder lists; neither need ever answer. Once a walk has not moved to
// its next entry for `stall_ms`, or for up to twice that, what it waits for fails.
class StallGuard {
 public:
  explicit StallGuard(DWORD stall_ms = 10'000) {
    if (DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), thread_.put(), 0, FALSE,
                        DUPLICATE_SAME_ACCESS))
      CreateTimerQueueTimer(&timer_, nullptr, Check, this, stall_ms, stall_ms, WT_EXECUTEDEFAULT);
  }
  ~StallGuard() {
    if (timer_) DeleteTimerQueueTimer(nullptr, timer_, INVALID_HANDLE_VALUE);
  }
  StallGuard(const StallGuard&) = delete;
  StallGuard& operator=(const StallGuard&) = delete;

 private:
  static void CALLBACK Check(void* context, BOOLEAN) {
    auto& guard = *static_cast<StallGuard*>(context);
    const uint64_t now = guard.steps_;
    if (std::exchange(guard.seen_, now) == now) CancelSynchronousIo(guard.thread_.get());
  }

  const std::atomic<uint64_t>& steps_ = WalkSteps();
  uint64_t seen_ = steps_;
  KernelHandle thread_;
  HANDLE timer_ = nullptr;
};
