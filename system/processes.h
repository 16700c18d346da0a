#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ProcessInfo {
  std::wstring name;  // of the executable file, as the system spells it
  uint32_t pid = 0;
  double mem_usage_mb = 0;  // working set in 2^20 bytes
  double cpu_time_sec = 0;  // kernel and user time since its start
  bool is_system = false;   // the page offers no ending
};

// True for the idle process, the kernel, and what carries the name of one of Windows' own processes (in any
// case), wherever it lies. The shell counts as one.
bool IsSystemProcess(uint32_t pid, const std::wstring& name);

// True when `path` begins with the Windows directory in any case, also when that is empty (unknown).
bool IsInWindowsDirectory(const std::wstring& path, const std::wstring& windows_directory);

// The page's message, one compact JSON document.
std::string BuildProcesses(int request_id, const std::vector<ProcessInfo>& processes);
