#pragma once

#include <cstdint>
#include <vector>

#include "system/processes.h"

// All running processes in the system's order (CreateToolhelp32Snapshot, OpenProcess,
// QueryFullProcessImageNameW, K32GetProcessMemoryInfo, GetProcessTimes). One that is known as a system
// process by name or id is not opened, one that cannot be opened counts as a system process; both report 0
// memory and 0 time. Empty when there is no snapshot.
std::vector<ProcessInfo> ListProcesses();

// Action: lists the processes and posts them. UI thread.
void getProcesses(int request_id);

// Action: ends a process at once, also one of the system's: the page decides what it offers. UI thread.
void killProcess(int request_id, uint32_t pid);
