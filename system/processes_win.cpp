#include "system/processes.h"

#include <windows.h>
#include <psapi.h>

#include "base/byte_units.h"
#include "base/file_time_win.h"
#include "base/handle_win.h"
#include "base/page.h"
#include "exec/processes.h"

namespace {

constexpr DWORD kPathUnits = 260;

std::wstring WindowsDirectory() {
  wchar_t buffer[kPathUnits] = {};
  const UINT length = GetWindowsDirectoryW(buffer, kPathUnits);
  return length < kPathUnits ? std::wstring(buffer, length) : std::wstring();
}

// Fills in the values that require opening the process.
void InspectProcess(ProcessInfo& process, const std::wstring& windows_directory) {
  const KernelHandle handle(
      OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_VM_READ, FALSE, process.pid));
  if (!handle) {
    process.is_system = true;
    return;
  }
  wchar_t path[kPathUnits] = {};
  DWORD path_units = kPathUnits;
  if (QueryFullProcessImageNameW(handle.get(), 0, path, &path_units))
    process.is_system = IsInWindowsDirectory({path, path_units}, windows_directory);

  PROCESS_MEMORY_COUNTERS memory = {};
  memory.cb = sizeof(memory);
  if (K32GetProcessMemoryInfo(handle.get(), &memory, sizeof(memory)))
    process.mem_usage_mb = static_cast<double>(memory.WorkingSetSize) / kBytesPerMegabyte;
  FILETIME creation = {}, exit = {}, kernel = {}, user = {};
  if (GetProcessTimes(handle.get(), &creation, &exit, &kernel, &user))
    process.cpu_time_sec = static_cast<double>(Ticks(kernel) + Ticks(user)) / 10'000'000.0;
}

}  // namespace

std::vector<ProcessInfo> ListProcesses() {
  std::vector<ProcessInfo> processes;
  const std::wstring windows_directory = WindowsDirectory();
  ForEachProcess([&](uint32_t pid, const wchar_t* name) {
    ProcessInfo& process = processes.emplace_back();
    process.name = name;
    process.pid = pid;
    process.is_system = IsSystemProcess(pid, process.name);
    if (!process.is_system) InspectProcess(process, windows_directory);
  });
  return processes;
}

void getProcesses(int request_id) {
  PostReply("processes", request_id, true, {{"processes", ToJson(ListProcesses())}});
}

void killProcess(int request_id, uint32_t pid) {
  PostReply("killProcess", request_id, TerminateProcessById(pid));
}
