#pragma once

#include <windows.h>
#include <psapi.h>

// Largest working set of this process so far, in kilobytes.
inline UINT PeakMemoryKb() {
  PROCESS_MEMORY_COUNTERS memory = {};
  K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
  return static_cast<UINT>(memory.PeakWorkingSetSize / 1024);
}
