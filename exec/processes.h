#pragma once

#include <cstdint>
#include <functional>

// Calls `visit` for each running process, in the system's order, with its ID and the name of its
// executable file (CreateToolhelp32Snapshot). The name is valid during the visit only. Visits none if
// there is no snapshot.
void ForEachProcess(const std::function<void(uint32_t pid, const wchar_t* name)>& visit);

// Ends a process immediately, with exit code 0 (OpenProcess with terminate access only,
// TerminateProcess). Returns false if the process cannot be opened (already gone, or protected) or
// cannot be terminated.
bool TerminateProcessById(uint32_t pid);
