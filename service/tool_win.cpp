#include "service/tool_win.h"

#include <windows.h>
#include <userenv.h>

#include <cstddef>
#include <vector>

#include "base/handle_win.h"
#include "exec/hidden_process_win.h"

namespace {

constexpr DWORD kChunkBytes = 4095;

// The variables that this process's user has by the registry: none that somebody has put into this process.
class OwnEnvironment {
 public:
  OwnEnvironment() {
    KernelHandle token;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_DUPLICATE, token.put()) &&
        !CreateEnvironmentBlock(&block_, token.get(), FALSE))
      block_ = nullptr;
  }
  ~OwnEnvironment() {
    if (block_) DestroyEnvironmentBlock(block_);
  }
  OwnEnvironment(const OwnEnvironment&) = delete;
  OwnEnvironment& operator=(const OwnEnvironment&) = delete;
  void* get() const { return block_; }

 private:
  void* block_ = nullptr;
};

// A list of one handle that the child inherits, and no other.
class InheritedHandle {
 public:
  explicit InheritedHandle(HANDLE handle) : handle_(handle) {
    SIZE_T size_bytes = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size_bytes);
    memory_.resize(size_bytes);
    auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
    if (InitializeProcThreadAttributeList(list, 1, 0, &size_bytes)) list_ = list;
    if (list_)
      UpdateProcThreadAttribute(list_, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &handle_, sizeof(handle_),
                                nullptr, nullptr);
  }
  ~InheritedHandle() {
    if (list_) DeleteProcThreadAttributeList(list_);
  }
  InheritedHandle(const InheritedHandle&) = delete;
  InheritedHandle& operator=(const InheritedHandle&) = delete;
  LPPROC_THREAD_ATTRIBUTE_LIST get() const { return list_; }

 private:
  HANDLE handle_;
  std::vector<std::byte> memory_;
  LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
};

void CALLBACK EndTree(void* job, BOOLEAN) {
  TerminateJobObject(job, 1);
}

}  // namespace

std::wstring SystemPath(std::wstring_view name) {
  wchar_t folder[MAX_PATH] = {};
  GetSystemDirectoryW(folder, MAX_PATH);
  return (std::wstring(folder) + L'\\').append(name);
}

std::optional<DWORD> RunSystemTool(std::wstring_view tool, const std::wstring& arguments,
                                   const std::function<void(std::string_view chunk)>& on_output,
                                   HANDLE cancel) {
  const std::wstring path = SystemPath(tool), folder = SystemPath(L"");
  std::wstring command = L"\"" + path + L"\" " + arguments;
  std::optional<OutputPipe> pipe = CreateOutputPipe();
  const OwnEnvironment environment;
  if (!pipe || !environment.get()) return std::nullopt;
  const InheritedHandle inherited(pipe->write.get());
  const KernelHandle job(cancel ? CreateJobObjectW(nullptr, nullptr) : nullptr);
  // Ends with this program, too.
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  if (!inherited.get() || (cancel && !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation,
                                                              &limits, sizeof(limits))))
    return std::nullopt;

  STARTUPINFOEXW startup = {};
  startup.StartupInfo.cb = sizeof(startup);
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError = pipe->write.get();
  startup.lpAttributeList = inherited.get();
  PROCESS_INFORMATION started = {};
  if (!CreateProcessW(
          path.c_str(), command.data(), nullptr, nullptr, TRUE,
          CREATE_NO_WINDOW | CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT,
          environment.get(), folder.c_str(), &startup.StartupInfo, &started))
    return std::nullopt;
  const KernelHandle process(started.hProcess), thread(started.hThread);
  pipe->write.reset();

  HANDLE wait = nullptr;
  if (job &&
      (!AssignProcessToJobObject(job.get(), process.get()) ||
       !RegisterWaitForSingleObject(&wait, cancel, EndTree, job.get(), INFINITE, WT_EXECUTEONLYONCE))) {
    TerminateProcess(process.get(), 1);
    return std::nullopt;
  }
  ResumeThread(thread.get());
  ReadChunks(pipe->read.get(), kChunkBytes, [&](std::string_view chunk) {
    if (on_output) on_output(chunk);
  });
  WaitForSingleObject(process.get(), INFINITE);
  if (wait) UnregisterWaitEx(wait, INVALID_HANDLE_VALUE);
  DWORD exit_code = 1;
  GetExitCodeProcess(process.get(), &exit_code);
  return exit_code;
}

bool RunsWell(std::wstring_view tool, const std::wstring& arguments) {
  return RunSystemTool(tool, arguments) == DWORD{0};
}
