#include "exec/service_pipe.h"

#include <exception>

#include "base/handle_win.h"
#include "base/page.h"
#include "exec/service_protocol.h"

namespace {

constexpr const wchar_t* kPipeName = L"\\\\.\\pipe\\VarnelServicePipe";
constexpr int kAttempts = 5;

// Opens the pipe once. If the result is empty, GetLastError() holds the reason.
FileHandle OpenPipe() {
  return FileHandle(
      CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
}

FileHandle ConnectForRequest() {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    FileHandle pipe = OpenPipe();
    if (pipe) return pipe;
    const bool busy = GetLastError() == ERROR_PIPE_BUSY;
    if (busy && WaitNamedPipeW(kPipeName, 1000)) continue;
    Sleep(100);
  }
  return {};
}

bool WriteRequest(HANDLE pipe, std::string_view action, const nlohmann::json& data) {
  std::string line;
  try {
    line = BuildServiceRequest(action, data);
  } catch (const std::exception&) {
    return false;
  }
  DWORD written = 0;
  if (!WriteFile(pipe, line.data(), static_cast<DWORD>(line.size()), &written, nullptr)) return false;
  FlushFileBuffers(pipe);  // Returns once the service has read the whole request.
  return true;
}

// Replaces `line` with the bytes up to the next line feed. Returns false if the pipe ends, or the line
// grows too long, before one arrives. Reading byte by byte stops exactly at the line feed.
bool ReadLine(HANDLE pipe, std::string& line) {
  line.clear();
  char byte = 0;
  DWORD received = 0;
  while (line.size() <= kMaxServiceLineBytes && ReadFile(pipe, &byte, 1, &received, nullptr) &&
         received == 1) {
    if (byte == '\n') return true;
    line += byte;
  }
  return false;
}

}  // namespace

bool IsServiceRunning() {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (OpenPipe()) return true;
    if (GetLastError() == ERROR_PIPE_BUSY)
      WaitNamedPipeW(kPipeName, 500);
    else
      Sleep(50);
  }
  return false;
}

bool EnsureServiceOrNotify() {
  if (IsServiceRunning()) return true;
  PostJsonToJs(kServiceUnavailableMessage);
  return false;
}

nlohmann::json SendServiceRequest(std::string_view action, const nlohmann::json& data) {
  FileHandle pipe = ConnectForRequest();
  if (!pipe) return FailedServiceReply("Service not running");
  if (!WriteRequest(pipe.get(), action, data)) return FailedServiceReply("Write failed");
  std::string line;
  ReadLine(pipe.get(), line);  // Text that the service did not end with a line feed is accepted.
  pipe.reset();
  return ParseServiceReply(line);
}

bool SendServiceCommand(std::string_view action, const nlohmann::json& data) {
  return EnsureServiceOrNotify() && ReplySuccess(SendServiceRequest(action, data));
}

ServiceSession RunServiceSession(std::string_view action, const nlohmann::json& data,
                                 const std::function<void(const std::string& message)>& on_output) {
  ServiceSession session;
  const FileHandle pipe = OpenPipe();
  session.connected = static_cast<bool>(pipe);
  if (!pipe || !WriteRequest(pipe.get(), action, data)) return session;
  std::string line;
  while (!session.exit && ReadLine(pipe.get(), line)) {
    const StreamRecord record = ParseStreamRecord(line);
    switch (record.kind) {
      case StreamRecord::Kind::kOutput:
        on_output(record.message);
        break;
      case StreamRecord::Kind::kExit:
        session.exit = {record.code, record.reboot_required};
        break;
      case StreamRecord::Kind::kIgnored:
        break;
      case StreamRecord::Kind::kMistyped:
        return session;
    }
  }
  return session;
}
