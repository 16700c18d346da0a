#include "exec/hidden_process_win.h"

#include "exec/tool_run.h"

std::optional<OutputPipe> CreateOutputPipe() {
  SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
  OutputPipe pipe;
  if (!CreatePipe(pipe.read.put(), pipe.write.put(), &inheritable, 0)) return std::nullopt;
  SetHandleInformation(pipe.read.get(), HANDLE_FLAG_INHERIT, 0);
  return pipe;
}

HiddenProcess StartHiddenProcess(const std::wstring& command, HANDLE output) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = output;
  startup.hStdError = output;
  std::wstring buffer = command;  // CreateProcessW writes to its command line
  PROCESS_INFORMATION started = {};
  HiddenProcess child;
  if (!CreateProcessW(nullptr, buffer.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr,
                      &startup, &started)) {
    child.error = GetLastError();
    return child;
  }
  child.process.reset(started.hProcess);
  child.thread.reset(started.hThread);
  return child;
}

void ReadChunks(HANDLE read_end, DWORD chunk_bytes,
                const std::function<void(std::string_view chunk)>& on_chunk) {
  char buffer[4096];
  DWORD received = 0;
  while (ReadFile(read_end, buffer, chunk_bytes, &received, nullptr) && received > 0)
    on_chunk({buffer, received});
}

std::string ReadOutput(HANDLE read_end, DWORD chunk_bytes) {
  std::string output;
  ReadChunks(read_end, chunk_bytes, [&](std::string_view chunk) { output += UpToZero(chunk); });
  return output;
}

DWORD TakeExitCode(HiddenProcess child) {
  DWORD exit_code = 0;
  GetExitCodeProcess(child.process.get(), &exit_code);
  return exit_code;
}
