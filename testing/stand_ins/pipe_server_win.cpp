#include "testing/stand_ins/pipe_server_win.h"

#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\VarnelServicePipe";
constexpr DWORD kBufferBytes = 64 * 1024;

Owned<FileHandleKind> CreateInstance(int instances, bool first) {
  Owned<FileHandleKind> pipe(CreateNamedPipeW(
      kPipeName, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0u),
      PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
      static_cast<DWORD>(instances), kBufferBytes, kBufferBytes, 0, nullptr));
  const DWORD error = GetLastError();
  if (!pipe) throw std::runtime_error("CreateNamedPipeW failed: " + std::to_string(error));
  return pipe;
}

std::string FromHex(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string ScriptBytes(const nlohmann::json& chunk) {
  if (chunk.contains("reply")) return chunk["reply"].dump() + "\n";
  if (chunk.contains("hex")) return FromHex(chunk["hex"]);
  std::string text = chunk.value("text", "");
  std::string bytes;
  for (int i = chunk.value("repeat", 1); i > 0; --i) bytes += text;
  return bytes;
}

}  // namespace

ServiceAnswer Stream(const std::vector<nlohmann::json>& records) {
  ServiceAnswer answer;
  for (const nlohmann::json& record : records) answer.chunks.push_back({record.dump() + "\n"});
  return answer;
}

ServiceAnswer AnswerFromScript(const nlohmann::json& script) {
  ServiceAnswer answer;
  if (script.contains("stream")) answer = Stream(script["stream"].get<std::vector<nlohmann::json>>());
  const nlohmann::json chunks = script.value("chunks", nlohmann::json::array());
  for (const nlohmann::json& chunk : chunks) {
    answer.chunks.push_back({ScriptBytes(chunk), chunk.value("delay_ms", 0)});
  }
  if (script.contains("reply") || script.contains("text") || script.contains("hex")) {
    answer.chunks.push_back({ScriptBytes(script), script.value("delay_ms", 0)});
  }
  answer.hold_open = script.value("hold_open", false);
  return answer;
}

StandInService::StandInService(Answers answers, int instances)
    : StandInService(
          [answers = std::move(answers)](const std::string& action) {
            const auto found = answers.find(action);
            return found != answers.end() ? found->second
                                          : Reply({{"success", false}, {"error", "Unknown action"}});
          },
          nullptr, instances) {}

StandInService::StandInService(Lookup lookup, std::function<void(const std::string&)> on_request,
                               int instances)
    : lookup_(std::move(lookup)),
      on_request_(std::move(on_request)),
      stop_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  for (int i = 0; i < instances; ++i) pipes_.push_back(CreateInstance(instances, i == 0));
  for (const auto& pipe : pipes_) threads_.emplace_back(&StandInService::Serve, this, pipe.get());
}

StandInService::~StandInService() {
  SetEvent(stop_.get());
  for (std::thread& thread : threads_) thread.join();
}

std::vector<std::string> StandInService::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

// Waits for a started operation; the count of bytes, 0 when it failed or the server stops.
DWORD StandInService::Transfer(HANDLE pipe, BOOL started, OVERLAPPED& operation) {
  const DWORD error = GetLastError();
  if (!started && error != ERROR_IO_PENDING) return 0;
  const HANDLE events[] = {operation.hEvent, stop_.get()};
  if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0) CancelIoEx(pipe, &operation);
  DWORD bytes = 0;
  return GetOverlappedResult(pipe, &operation, &bytes, TRUE) ? bytes : 0;
}

void StandInService::Serve(HANDLE pipe) {
  const Owned<KernelHandleKind> event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  while (WaitForSingleObject(stop_.get(), 0) == WAIT_TIMEOUT) {
    OVERLAPPED operation{};
    operation.hEvent = event.get();
    const BOOL connected = ConnectNamedPipe(pipe, &operation);
    const DWORD error = GetLastError();
    if (!connected && error == ERROR_IO_PENDING) {
      SetLastError(error);
      Transfer(pipe, connected, operation);
    }
    if (WaitForSingleObject(stop_.get(), 0) == WAIT_TIMEOUT) {
      ++connections_;
      Answer(pipe);
    }
    // The instance stays, so that a client meets "busy" rather than "not found" between two connections.
    DisconnectNamedPipe(pipe);
  }
}

void StandInService::Answer(HANDLE pipe) {
  const Owned<KernelHandleKind> event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  std::vector<char> received(64 * 1024);
  const auto read = [&] {
    OVERLAPPED operation{};
    operation.hEvent = event.get();
    const BOOL started =
        ReadFile(pipe, received.data(), static_cast<DWORD>(received.size()), nullptr, &operation);
    return std::string_view(received.data(), Transfer(pipe, started, operation));
  };
  const auto write = [&](const std::string& bytes) {
    OVERLAPPED operation{};
    operation.hEvent = event.get();
    const BOOL started = WriteFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &operation);
    return Transfer(pipe, started, operation) == bytes.size();
  };

  std::string request;
  while (request.empty() || request.back() != '\n') {
    const std::string_view part = read();
    if (part.empty()) return;
    request += part;
  }
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  if (on_request_) on_request_(request);

  const nlohmann::json parsed = nlohmann::json::parse(request, nullptr, false);
  const bool named = parsed.is_object() && parsed.contains("action") && parsed["action"].is_string();
  const ServiceAnswer answer = lookup_(named ? parsed["action"].get<std::string>() : "");
  for (const auto& chunk : answer.chunks) {
    if (chunk.delay_ms > 0 &&
        WaitForSingleObject(stop_.get(), static_cast<DWORD>(chunk.delay_ms)) != WAIT_TIMEOUT) {
      return;
    }
    if (!write(chunk.bytes)) return;
  }
  while (answer.hold_open && !read().empty()) continue;
  // Disconnecting throws away what the client has not read yet.
  FlushFileBuffers(pipe);
}

BusyStandInService::BusyStandInService() : server_(CreateInstance(1, true)) {
  client_.reset(CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!client_) throw std::runtime_error("the stand-in could not take its own pipe");
}
