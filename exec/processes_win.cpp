#include "exec/processes.h"

#include <windows.h>
#include <tlhelp32.h>

#include "base/handle_win.h"

void ForEachProcess(const std::function<void(uint32_t pid, const wchar_t* name)>& visit) {
  const SnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) return;
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
       more = Process32NextW(snapshot.get(), &entry))
    visit(entry.th32ProcessID, entry.szExeFile);
}

bool TerminateProcessById(uint32_t pid) {
  const KernelHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, pid));
  return process && TerminateProcess(process.get(), 0);
}
