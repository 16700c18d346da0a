#include "service/tool_win.h"

#include <windows.h>
#include <userenv.h>

#include <cstddef>
#include <vector>

#include "base/handle_win.h"
#include "base/lower_case.h"
#include "exec/hidden_process_win.h"

namespace {

constexpr DWORD kChunkBytes = 4095;

// Returns the temporary folder that only the system can access (GetTempPath2W), or an empty path if
// Windows has none. The system's variables name C:\Windows\Temp, where any user may put a library beside
// a program that a tool unpacks.
std::wstring TemporaryFolder() {
  using GetTempPath2 = DWORD(WINAPI*)(DWORD size_units, wchar_t * path);
  const auto ask = reinterpret_cast<GetTempPath2>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetTempPath2W")));
  wchar_t path[MAX_PATH + 1] = {};
  if (ask) ask(MAX_PATH + 1, path);
  std::wstring folder = path;
  if (folder.ends_with(L'\\')) folder.pop_back();
  return folder;
}

// Returns the variables that this process's user has in the registry, as a block for CreateProcessW, and
// none that another program has put into this process. Returns an empty block on failure.
std::wstring OwnEnvironment() {
  KernelHandle token;
  void* block = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_DUPLICATE, token.put()) ||
      !CreateEnvironmentBlock(&block, token.get(), FALSE))
    return {};
  const std::wstring temporary = TemporaryFolder();
  std::wstring variables;
  const auto* next = static_cast<const wchar_t*>(block);
  for (std::wstring_view line = next; !line.empty(); line = next) {
    next += line.size() + 1;
    const std::wstring name = LowerCase(std::wstring(line.substr(0, line.find(L'='))));
    const bool is_replaced = !temporary.empty() && (name == L"temp" || name == L"tmp");
    variables += is_replaced ? name + L'=' + temporary : std::wstring(line);
    variables += L'\0';
  }
  DestroyEnvironmentBlock(block);
  return variables + L'\0';
}

// A list of the one handle that the child inherits.
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
  std::wstring environment = OwnEnvironment();
  if (!pipe || environment.empty()) return std::nullopt;
  const InheritedHandle inherited(pipe->write.get());
  const KernelHandle job(cancel ? CreateJobObjectW(nullptr, nullptr) : nullptr);
  // The tool also ends with this program.
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
          environment.data(), folder.c_str(), &startup.StartupInfo, &started))
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
