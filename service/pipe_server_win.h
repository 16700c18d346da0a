#pragma once

#include <windows.h>

#include <atomic>
#include <vector>

#include "base/handle_win.h"

// The service's end of \\.\pipe\VarnelServicePipe (CreateNamedPipeW, ConnectNamedPipe): a thread an instance,
// which sleeps until somebody connects.
class PipeServer {
 public:
  // Serving ends when `stop` is signalled, and what is under way with it, but for what runs to its end.
  explicit PipeServer(HANDLE stop) : stop_(stop) {}

  // Takes all instances of the pipe; false when somebody else has the name or one of them.
  bool Open();

  // Returns when the last request has ended.
  void Serve();

 private:
  void ServeInstance(HANDLE pipe);
  void ServePeer(HANDLE pipe);

  HANDLE stop_;
  std::vector<FileHandle> instances_;
  std::atomic<int> free_ = 0;  // instances without a peer
};
