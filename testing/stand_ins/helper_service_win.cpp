// Stand-in for the helper service that serves one client at a time; the driver runs several. Prints "ready",
// then every request. Answers each with the pieces on its standard input: per piece the number of its bytes,
// a line feed and the bytes. The number 0 ends the answer and the connection.
#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "base/handle_win.h"

namespace {

// Returns the request's line, or a part of it if the client has left.
std::string ReadRequest(HANDLE pipe) {
  std::string request;
  char part[4096];
  DWORD count = 0;
  while (!request.ends_with('\n') && ReadFile(pipe, part, sizeof(part), &count, nullptr) && count > 0)
    request.append(part, count);
  return request;
}

void Answer(HANDLE pipe) {
  for (size_t size; std::cin >> size && size > 0;) {
    std::string bytes(size, '\0');
    std::cin.ignore().read(bytes.data(), static_cast<std::streamsize>(size));
    DWORD written = 0;
    WriteFile(pipe, bytes.data(), static_cast<DWORD>(size), &written, nullptr);
  }
  FlushFileBuffers(pipe);  // disconnecting discards what the client has not read yet
}

}  // namespace

int main() {
  const FileHandle pipe(CreateNamedPipeW(L"\\\\.\\pipe\\VarnelServicePipe", PIPE_ACCESS_DUPLEX,
                                         PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS,
                                         PIPE_UNLIMITED_INSTANCES, 65536, 65536, 0, nullptr));
  if (!pipe) return 3;
  _setmode(_fileno(stdin), _O_BINARY);
  for (std::cout << "ready" << std::endl; std::cin;) {
    ConnectNamedPipe(pipe.get(), nullptr);
    const std::string request = ReadRequest(pipe.get());
    std::cout << request << std::flush;
    if (request.ends_with('\n')) Answer(pipe.get());
    // The instance stays, so between two connections a client gets "busy" rather than "not found".
    DisconnectNamedPipe(pipe.get());
  }
}
