#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/handle_win.h"

// What the stand-in service does after it has read a request line: writes the chunks, each after its delay,
// and closes the connection, or keeps it open (`hold_open`) until the client closes it. No chunk and no hold
// is a close without an answer.
struct ServiceAnswer {
  struct Chunk {
    std::string bytes;
    int delay_ms = 0;
  };
  std::vector<Chunk> chunks;
  bool hold_open = false;
};

// One reply line.
inline ServiceAnswer Reply(const nlohmann::json& reply) {
  return {{{reply.dump() + "\n"}}};
}
// Bytes as they are, a line feed included or not.
inline ServiceAnswer RawReply(std::string bytes) {
  return {{{std::move(bytes)}}};
}
// One line a record, as a streamed session sends them.
ServiceAnswer Stream(const std::vector<nlohmann::json>& records);
// An answer from a test's script file; testing/README.md describes the format. Throws
// nlohmann::json::exception.
ServiceAnswer AnswerFromScript(const nlohmann::json& script);

// Stand-in for the helper service: a server on \\.\pipe\VarnelServicePipe that answers as a test says, until
// destroyed. A request whose action has no answer gets {"error":"Unknown action","success":false}.
//
//   StandInService service({{"get_hosts_file", Reply({{"success", true}, {"content", "x"}})}});
//   ... call the client ...
//   EXPECT_EQ(service.requests(), std::vector<std::string>{"{\"action\":\"get_hosts_file\",\"data\":{}}\n"});
class StandInService {
 public:
  using Answers = std::map<std::string, ServiceAnswer>;
  using Lookup = std::function<ServiceAnswer(const std::string& action)>;

  // `instances`: how many clients are served at once; a further open fails with ERROR_PIPE_BUSY.
  explicit StandInService(Answers answers, int instances = 4);
  // `lookup` is called on the server's threads. `on_request` gets each request line as it comes.
  StandInService(Lookup lookup, std::function<void(const std::string&)> on_request, int instances);
  ~StandInService();
  StandInService(const StandInService&) = delete;
  StandInService& operator=(const StandInService&) = delete;

  // Every request so far: its exact bytes, the line feed included.
  std::vector<std::string> requests() const;
  // How many clients connected so far, those that sent nothing (probes) included.
  int connections() const { return connections_; }

 private:
  void Serve(HANDLE pipe);
  void Answer(HANDLE pipe);
  DWORD Transfer(HANDLE pipe, BOOL started, OVERLAPPED& operation);

  Lookup lookup_;
  std::function<void(const std::string&)> on_request_;
  Owned<KernelHandleKind> stop_;
  std::vector<Owned<FileHandleKind>> pipes_;
  std::vector<std::thread> threads_;
  std::atomic<int> connections_ = 0;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
};

// Makes the pipe exist with its only instance taken, as a service that is busy with another client.
class BusyStandInService {
 public:
  BusyStandInService();

 private:
  Owned<FileHandleKind> server_, client_;
};
