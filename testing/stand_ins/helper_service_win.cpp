// Stand-in for the helper service: helper_service.exe SCRIPT LOG [busy]. Answers according to SCRIPT and
// appends each request line to LOG. Reads SCRIPT again for each request, so that a test can change it
// (testing/README.md describes it). Prints "ready" and ends with its standard input. With the word
// "busy", the pipe's only instance is always taken.
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

#include <nlohmann/json.hpp>

#include "base/handle_win.h"
#include "testing/stand_ins/script_bytes.h"

namespace {

using nlohmann::json;

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\VarnelServicePipe";
constexpr DWORD kInstances = 4;  // clients served concurrently; one more open fails with ERROR_PIPE_BUSY
constexpr DWORD kBufferBytes = 64 * 1024;

FileHandle CreateInstance(DWORD instances) {
  FileHandle pipe(
      CreateNamedPipeW(kPipeName, PIPE_ACCESS_DUPLEX,
                       PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                       instances, kBufferBytes, kBufferBytes, 0, nullptr));
  if (!pipe) std::exit(3);
  return pipe;
}

json AnswerTo(const std::filesystem::path& script_file, const std::string& request) {
  std::ifstream file(script_file, std::ios::binary);
  const json script = json::parse(file), parsed = json::parse(request, nullptr, false);
  const std::string action = parsed.is_object() ? parsed.value("action", "") : "";
  const json unknown = {{"reply", {{"success", false}, {"error", "Unknown action"}}}};
  return script.value(action, script.value("*", unknown));
}

// Returns an empty text if the client has gone.
std::string Read(HANDLE pipe) {
  std::string part(kBufferBytes, '\0');
  DWORD count = 0;
  if (!ReadFile(pipe, part.data(), kBufferBytes, &count, nullptr)) count = 0;
  part.resize(count);
  return part;
}

void Answer(HANDLE pipe, const json& answer) {
  json chunks = answer.value("chunks", json::array());
  for (const json& record : answer.value("stream", json::array())) chunks.push_back({{"reply", record}});
  chunks.push_back(answer);
  for (const json& chunk : chunks) {
    Sleep(static_cast<DWORD>(chunk.value("delay_ms", 0)));
    const std::string bytes = ScriptBytes(chunk);
    DWORD written = 0;
    if (!bytes.empty() && !WriteFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
      return;
  }
  while (answer.value("hold_open", false) && !Read(pipe).empty()) continue;
  FlushFileBuffers(pipe);  // disconnecting discards what the client has not read yet
}

void Serve(const FileHandle pipe, const std::filesystem::path script_file,
           const std::filesystem::path log_file) {
  static std::mutex mutex;
  for (;;) {
    ConnectNamedPipe(pipe.get(), nullptr);
    std::string request;
    for (std::string part; !request.ends_with('\n') && !(part = Read(pipe.get())).empty();) request += part;
    if (request.ends_with('\n')) {
      {
        const std::lock_guard lock(mutex);
        std::ofstream(log_file, std::ios::binary | std::ios::app) << request;
      }
      Answer(pipe.get(), AnswerTo(script_file, request));
    }
    // The instance stays, so between two connections a client gets "busy" rather than "not found".
    DisconnectNamedPipe(pipe.get());
  }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 3) return 2;
  FileHandle server, client;
  if (argc > 3) {
    server = CreateInstance(1);
    client.reset(CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  } else {
    for (DWORD i = 0; i < kInstances; ++i)
      std::thread(Serve, CreateInstance(kInstances), argv[1], argv[2]).detach();
  }
  std::cout << "ready" << std::endl;
  while (std::cin.get() != EOF) continue;
  std::_Exit(0);  // the threads still wait for clients
}
