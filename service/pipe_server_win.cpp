#include "service/pipe_server_win.h"

#include <sddl.h>

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "service/peer_win.h"
#include "service/request.h"
#include "service/requests_win.h"

namespace {

constexpr wchar_t kName[] = L"\\\\.\\pipe\\VarnelServicePipe";
// Full access for the system's account, reading and writing for users logged on here, nothing for
// others.
constexpr wchar_t kAccess[] = L"D:P(A;;GA;;;SY)(A;;GRGW;;;IU)";

// A peer with write access could also create instances of the pipe. So all possible instances are
// created at the start and never closed.
constexpr size_t kInstances = 8;

constexpr DWORD kBufferBytes = 64 * 1024;
constexpr DWORD kRequestMs = 5'000;  // for the whole request
constexpr DWORD kUnreadMs = 30'000;  // per piece of the answer, while an instance is free
constexpr DWORD kStepMs = 1'000;
constexpr DWORD kRetryMs = 1'000;  // after an unexpected error

KernelHandle MakeEvent() {
  return KernelHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// A pending operation on the pipe.
class Operation {
 public:
  explicit Operation(HANDLE pipe) : pipe_(pipe), event_(MakeEvent()) { overlapped_.hEvent = event_.get(); }
  ~Operation() { Cancel(); }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  HANDLE event() const { return event_.get(); }

  DWORD BeginConnect() { return Begin(ConnectNamedPipe(pipe_, &overlapped_)); }
  void BeginRead(char* buffer, DWORD size_bytes) {
    Begin(ReadFile(pipe_, buffer, size_bytes, nullptr, &overlapped_));
  }
  void BeginWrite(std::string_view bytes) {
    Begin(WriteFile(pipe_, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &overlapped_));
  }

  // Returns the number of bytes moved. Cancels the operation and returns nothing if it fails, times out
  // or `stop` is signalled.
  std::optional<DWORD> Finish(HANDLE stop, DWORD timeout_ms) {
    const HANDLE events[] = {event_.get(), stop};
    DWORD moved = 0;
    if (is_pending_ && WaitForMultipleObjects(2, events, FALSE, timeout_ms) == WAIT_OBJECT_0 &&
        GetOverlappedResult(pipe_, &overlapped_, &moved, TRUE)) {
      is_pending_ = false;
      return moved;
    }
    Cancel();
    return std::nullopt;
  }

 private:
  // Returns the error with which the operation failed to start, or ERROR_IO_PENDING if it started.
  DWORD Begin(BOOL result) {
    const DWORD error = result ? ERROR_IO_PENDING : GetLastError();
    is_pending_ = error == ERROR_IO_PENDING;
    if (!is_pending_) SetEvent(event_.get());
    return error;
  }
  void Cancel() {
    DWORD moved = 0;
    if (!is_pending_) return;
    CancelIoEx(pipe_, &overlapped_);
    GetOverlappedResult(pipe_, &overlapped_, &moved, TRUE);
    is_pending_ = false;
  }

  HANDLE pipe_;
  KernelHandle event_;
  OVERLAPPED overlapped_ = {};
  bool is_pending_ = false;
};

// One instance with its connected peer.
class Connection {
 public:
  // `free` is the number of instances without a peer.
  Connection(HANDLE pipe, HANDLE stop, const std::atomic<int>& free)
      : pipe_(pipe), stop_(stop), free_(free) {}

  // Waits for a peer. Ignores one that has already left. Returns false if the service stops.
  bool WaitForPeer() {
    for (;;) {
      Operation connect(pipe_);
      const DWORD error = connect.BeginConnect();
      if (error == ERROR_PIPE_CONNECTED || connect.Finish(stop_, INFINITE)) return true;
      if (WaitForSingleObject(stop_, error == ERROR_IO_PENDING || error == ERROR_NO_DATA ? 0 : kRetryMs) ==
          WAIT_OBJECT_0)
        return false;
      DisconnectNamedPipe(pipe_);
    }
  }

  // Reads up to the first line feed. Returns nothing if none arrives in time.
  std::optional<std::string> ReadLine() {
    const ULONGLONG end = GetTickCount64() + kRequestMs;
    std::string line;
    std::vector<char> buffer(kBufferBytes);
    for (ULONGLONG now; (now = GetTickCount64()) < end && line.size() <= kMaxRequestBytes;) {
      Operation read(pipe_);
      read.BeginRead(buffer.data(), kBufferBytes);
      const std::optional<DWORD> received = read.Finish(stop_, static_cast<DWORD>(end - now));
      if (!received) return std::nullopt;
      const std::string_view piece(buffer.data(), *received);
      const size_t feed = piece.find('\n');
      line.append(piece.substr(0, feed));
      if (feed != piece.npos) return line;
    }
    return std::nullopt;
  }

  void Write(std::string_view bytes) {
    while (!bytes.empty() && !is_broken_) {
      Operation write(pipe_);
      write.BeginWrite(bytes.substr(0, kBufferBytes));
      WaitForReader(write.event());
      const std::optional<DWORD> written = write.Finish(stop_, 0);
      is_broken_ = !written || *written == 0;
      bytes.remove_prefix(written.value_or(0));
    }
    // A peer that has stopped reading counts as gone.
    if (is_broken_) DisconnectNamedPipe(pipe_);
  }

  // Waits until `event` is signalled, the service stops, or the peer's time is over: the time of a
  // request if all instances are taken.
  void WaitForReader(HANDLE event) const {
    const HANDLE events[] = {event, stop_};
    for (DWORD waited_ms = 0; !is_broken_ && waited_ms < (free_ > 0 ? kUnreadMs : kRequestMs);
         waited_ms += kStepMs)
      if (WaitForMultipleObjects(2, events, FALSE, kStepMs) != WAIT_TIMEOUT) return;
  }

 private:
  HANDLE pipe_, stop_;
  const std::atomic<int>& free_;
  bool is_broken_ = false;
};

}  // namespace

bool PipeServer::Open() {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(kAccess, SDDL_REVISION_1, &descriptor, nullptr))
    return false;
  SECURITY_ATTRIBUTES security = {sizeof(security), descriptor, FALSE};
  while (instances_.size() < kInstances) {
    const DWORD first = instances_.empty() ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
    FileHandle instance(
        CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                         kInstances, kBufferBytes, kBufferBytes, 0, &security));
    if (!instance) break;
    instances_.push_back(std::move(instance));
  }
  LocalFree(descriptor);
  return instances_.size() == kInstances;
}

void PipeServer::Serve() {
  free_ = static_cast<int>(kInstances);
  std::vector<std::jthread> threads;
  for (const FileHandle& instance : instances_) threads.emplace_back([&] { ServeInstance(instance.get()); });
}

void PipeServer::ServeInstance(HANDLE pipe) {
  while (Connection(pipe, stop_, free_).WaitForPeer()) {
    --free_;
    try {
      ServePeer(pipe);
    } catch (const std::exception&) {
      // Out of memory: the peer gets no answer.
    }
    DisconnectNamedPipe(pipe);
    ++free_;
  }
}

void PipeServer::ServePeer(HANDLE pipe) {
  Connection connection(pipe, stop_, free_);
  std::optional<std::string> line = connection.ReadLine();
  if (!line) return;
  const std::optional<PeerRequest> request = ParseRequest(*line);
  line.reset();
  if (!request) return;
  const Peer peer = IdentifyPeer(pipe);

  // Nothing more is expected: this ends once the peer closes its end or breaks the rules.
  char more = 0;
  Operation rest(pipe);
  rest.BeginRead(&more, 1);
  HandleRequest(*request, peer,
                {[&](const std::string& text) { connection.Write(text + '\n'); }, rest.event()});

  // Disconnecting would discard what the peer has not read yet.
  connection.WaitForReader(rest.event());
}
