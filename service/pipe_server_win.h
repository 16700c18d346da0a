#pragma once

#include <windows.h>

#include <atomic>
#include <vector>

#include "base/handle_win.h"

// The service's end of \\.\pipe\VarnelServicePipe (CreateNamedPipeW, ConnectNamedPipe): one thread per
// instance, asleep until a peer connects.
class PipeServer {
 public:
  // Signalling `stop` ends serving, including requests in progress, except those that must run to their
  // end.
  explicit PipeServer(HANDLE stop) : stop_(stop) {}

  // Creates all instances of the pipe. Returns false if another program owns the name or one of them.
  bool Open();

  // Returns once the last request has ended.
  void Serve();

 private:
  void ServeInstance(HANDLE pipe);
  void ServePeer(HANDLE pipe);

  HANDLE stop_;
  std::vector<FileHandle> instances_;
  std::atomic<int> free_ = 0;  // instances without a peer
};
