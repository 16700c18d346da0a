// Measures the process list against the bare snapshot walk with the same calls for each process:
// processes_bench [rounds].
#include <windows.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/handle_win.h"
#include "system/processes_win.h"
#include "testing/bench/measure.h"

namespace {

constexpr int kChildren = 30;
constexpr double kAim = 1.1;

// Enough processes for the walk to weigh more than the snapshot.
class Children {
 public:
  Children() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    for (int i = 0; i < kChildren; ++i) {
      std::wstring line = L"\"" + std::wstring(path) + L"\" --wait";
      STARTUPINFOW startup = {};
      startup.cb = sizeof(startup);
      PROCESS_INFORMATION started = {};
      if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &started))
        continue;
      processes_.emplace_back(started.hProcess);
      CloseHandle(started.hThread);
    }
  }
  ~Children() {
    for (const KernelHandle& process : processes_) TerminateProcess(process.get(), 0);
  }

 private:
  std::vector<KernelHandle> processes_;
};

int BareWalk(const std::unordered_set<DWORD>& opened) {
  int count = 0;
  const SnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
       more = Process32NextW(snapshot.get(), &entry)) {
    ++count;
    if (!opened.contains(entry.th32ProcessID)) continue;
    const KernelHandle handle(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_VM_READ, FALSE, entry.th32ProcessID));
    wchar_t path[MAX_PATH];
    DWORD units = MAX_PATH;
    QueryFullProcessImageNameW(handle.get(), 0, path, &units);
    PROCESS_MEMORY_COUNTERS memory = {};
    K32GetProcessMemoryInfo(handle.get(), &memory, sizeof(memory));
    FILETIME creation, exit, kernel, user;
    GetProcessTimes(handle.get(), &creation, &exit, &kernel, &user);
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--wait") Sleep(INFINITE);
  const int rounds = argc == 2 ? std::max(1, std::atoi(argv[1])) : 101;
  const Children children;
  std::unordered_set<DWORD> opened;
  for (const ProcessInfo& process : ListProcesses())
    if (!IsSystemProcess(process.pid, process.name)) opened.insert(process.pid);

  size_t listed = 0;
  int walked = 0;
  Compare(
      "list of processes", kAim, rounds,
      [&] { return Milliseconds([&] { listed = ListProcesses().size(); }); },
      [&] { return Milliseconds([&] { walked = BareWalk(opened); }); });
  std::printf("processes: %zu listed, %d walked, %zu opened\n", listed, walked, opened.size());
}
