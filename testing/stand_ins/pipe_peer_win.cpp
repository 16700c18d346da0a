// A program other than Varnel.exe at the helper service's pipe, well or badly behaved: pipe_peer.exe MODE.
//   ask                   sends its standard input, prints the answer
//   leave                 sends its standard input and closes immediately
//   fill BYTES            sends bytes without a line feed, prints for how long the service accepts them
//   hold COUNT [REQUEST]  opens connections, sends the request on each, prints "held", reads nothing
//   probe COUNT           opens and closes connections, asks its standard input on each; prints the mean
//                         time in milliseconds
//   steal                 tries to create its own instance of the pipe, prints the error
//   handles               prints how many handles VarnelService.exe has
#include <windows.h>
#include <tlhelp32.h>

#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "base/handle_win.h"

namespace {

constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\VarnelServicePipe";

FileHandle Open() {
  for (int attempt = 0; attempt < 200; ++attempt, WaitNamedPipeW(kPipe, 100)) {
    FileHandle pipe(CreateFileW(kPipe, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    if (pipe) return pipe;
    if (GetLastError() != ERROR_PIPE_BUSY) break;
  }
  std::printf("no connection: %lu\n", GetLastError());
  ExitProcess(3);
}

// Returns lines up to the first that is not output of a stream, because the service then waits for the
// client to leave.
std::string Answer(HANDLE pipe) {
  std::string answer, line;
  char byte = 0;
  for (DWORD received = 0; ReadFile(pipe, &byte, 1, &received, nullptr) && received > 0;) {
    line += byte;
    if (byte != '\n') continue;
    answer += line;
    if (line.find("\"type\":\"stdout\"") == std::string::npos) break;
    line.clear();
  }
  return answer;
}

void Send(HANDLE pipe, const std::string& bytes) {
  DWORD written = 0;
  WriteFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

std::string Input() {
  return {std::istreambuf_iterator<char>(std::cin), {}};
}

// Counts the handles by trying every value that a handle of a small process can have. Wine keeps no
// count.
int HandlesOf(HANDLE process) {
  int count = 0;
  for (uintptr_t value = 4; value < 4 * 4096; value += 4) {
    KernelHandle copy;
    count += DuplicateHandle(process, reinterpret_cast<HANDLE>(value), GetCurrentProcess(), copy.put(), 0,
                             FALSE, DUPLICATE_SAME_ACCESS) != FALSE;
  }
  return count;
}

void PrintHandles() {
  const SnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
       more = Process32NextW(snapshot.get(), &entry)) {
    if (lstrcmpiW(entry.szExeFile, L"VarnelService.exe") != 0) continue;
    const KernelHandle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, entry.th32ProcessID));
    std::printf("%d\n", HandlesOf(process.get()));
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::string mode = count > 1 ? arguments[1] : "";
  const size_t amount = count > 2 ? std::stoul(arguments[2]) : 1;
  const ULONGLONG begin = GetTickCount64();
  if (mode == "ask" || mode == "leave") {
    const std::string request = Input();
    const FileHandle pipe = Open();
    Send(pipe.get(), request);
    if (mode == "ask") std::fputs(Answer(pipe.get()).c_str(), stdout);
  } else if (mode == "fill") {
    const FileHandle pipe = Open();
    Send(pipe.get(), std::string(amount, 'x'));
    Answer(pipe.get());
    std::printf("%llu\n", GetTickCount64() - begin);
  } else if (mode == "hold") {
    std::vector<FileHandle> held;
    while (held.size() < amount) {
      held.push_back(Open());
      if (count > 3) Send(held.back().get(), arguments[3] + std::string("\n"));
    }
    std::puts("held");
    std::fflush(stdout);
    Input();
  } else if (mode == "probe") {
    const std::string request = Input();
    for (size_t i = 0; i < amount; ++i) {
      const FileHandle pipe = Open();
      if (!request.empty()) Send(pipe.get(), request), Answer(pipe.get());
    }
    std::printf("%.3f\n", static_cast<double>(GetTickCount64() - begin) / static_cast<double>(amount));
  } else if (mode == "steal") {
    const FileHandle pipe(CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE,
                                           PIPE_UNLIMITED_INSTANCES, 512, 512, 0, nullptr));
    std::printf("%lu\n", pipe ? 0 : GetLastError());
  } else if (mode == "handles") {
    PrintHandles();
  } else {
    return 2;
  }
  return 0;
}
