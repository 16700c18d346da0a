#pragma once

#include <cstdint>
#include <functional>

// Calls `visit` for each running process, in the system's order, with its id and the name of its executable
// file, which is valid during the visit (CreateToolhelp32Snapshot). Visits none if there is no snapshot.
void ForEachProcess(const std::function<void(uint32_t pid, const wchar_t* name)>& visit);

// Ends a process at once, with exit code 0 (OpenProcess with terminate access only, TerminateProcess).
// Returns false if the process cannot be opened (already gone, or protected) or cannot be terminated.
bool TerminateProcessById(uint32_t pid);
