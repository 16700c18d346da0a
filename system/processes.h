#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

struct ProcessInfo {
  std::wstring name;  // of the executable file, in the system's spelling
  uint32_t pid = 0;
  double mem_usage_mb = 0;  // working set in 2^20 bytes
  double cpu_time_sec = 0;  // kernel and user time since the process started
  bool is_system = false;   // true: the page does not offer to end it
};

// Lists the processes and posts them. UI thread.
void getProcesses(int request_id);

// Ends a process immediately, even a system process: the page decides which ones it offers. UI thread.
void killProcess(int request_id, uint32_t pid);

// Returns all running processes in the system's order (CreateToolhelp32Snapshot, OpenProcess,
// QueryFullProcessImageNameW, K32GetProcessMemoryInfo, GetProcessTimes). A system process known by name
// or ID is not opened, and a process that cannot be opened counts as a system process; both report 0
// memory and 0 time. Returns none if there is no snapshot.
std::vector<ProcessInfo> ListProcesses();

// Returns true for the idle process, the kernel, and every process with the name of one of Windows' own
// (in any case), wherever its file is. The shell is one of them.
bool IsSystemProcess(uint32_t pid, const std::wstring& name);

// Returns true if `path` begins with the Windows directory, in any case, or if that directory is empty
// (unknown).
bool IsInWindowsDirectory(const std::wstring& path, const std::wstring& windows_directory);

// Returns the rows of the page's table.
nlohmann::json ToJson(const std::vector<ProcessInfo>& processes);
