// Measures the program's work against the bare system calls behind it: bench.exe NAME. Prints the figure
// with its aim, or fails. Works in C:\varnel-bench.
#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

#include "app/actions.h"
#include "app/main_window_win.h"
#include "base/exe_directory.h"
#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "disk/analysis.h"
#include "system/processes.h"
#include "system/telemetry.h"

namespace {

const std::wstring kTree = L"C:\\varnel-bench\\tree";

// Creates a tree with a few files in most folders and eight folders in each.
void MakeTree(const std::wstring& folder, int items) {
  std::filesystem::create_directories(folder);
  const int files = std::min(items, items > 5000 ? 500 : 5), share = (items - files) / 8 + 1;
  for (int i = 0; i < files; ++i)
    std::ofstream(std::filesystem::path(folder + L"\\component" + std::to_wstring(i))) << i;
  for (int left = items - files; left > 0; left -= share)
    MakeTree(folder + L"\\folder" + std::to_wstring(left), std::min(left, share) - 1);
}

// Adds up the files' sizes, or deletes everything. With `folders`, leaves the subfolders to the caller.
uint64_t BareWalk(const std::wstring& folder, FINDEX_INFO_LEVELS level, bool deletes,
                  std::vector<std::wstring>* folders = nullptr) {
  uint64_t bytes = 0;
  WIN32_FIND_DATAW entry;
  const DWORD fetch = level == FindExInfoBasic ? FIND_FIRST_EX_LARGE_FETCH : 0;
  const FindHandle find(
      FindFirstFileExW((folder + L"\\*").c_str(), level, &entry, FindExSearchNameMatch, nullptr, fetch));
  for (bool more = !!find; more; more = FindNextFileW(find.get(), &entry)) {
    const bool is_folder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!is_folder) bytes += entry.nFileSizeLow;
    if (IsDotEntry(entry.cFileName) || (!is_folder && !deletes)) continue;
    const std::wstring path = folder + L"\\" + entry.cFileName;
    if (is_folder && folders) folders->push_back(path);
    if (is_folder && !folders) bytes += BareWalk(path, level, deletes);
    if (deletes) is_folder ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str());
  }
  return bytes;
}

void Scan() {
  FolderSizes sizes;
  std::vector<SystemHelper::DiskFileItem> files;
  SystemHelper::AnalyzeDiskSpace(kTree, sizes, files, {});
}

void BareScan() {  // one task per folder of the root, like the analysis
  std::vector<std::wstring> folders;
  BareWalk(kTree, FindExInfoBasic, false, &folders);
  std::vector<std::future<uint64_t>> tasks;
  for (const std::wstring& folder : folders)
    tasks.push_back(std::async(std::launch::async, BareWalk, folder, FindExInfoBasic, false, nullptr));
}

void BareProcesses() {
  const SnapshotHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
       more = Process32NextW(snapshot.get(), &entry)) {
    constexpr DWORD rights = PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_VM_READ;
    if (IsSystemProcess(entry.th32ProcessID, entry.szExeFile)) continue;
    const KernelHandle process(OpenProcess(rights, FALSE, entry.th32ProcessID));
    wchar_t path[MAX_PATH];
    DWORD units = MAX_PATH;
    QueryFullProcessImageNameW(process.get(), 0, path, &units);
    PROCESS_MEMORY_COUNTERS memory;
    K32GetProcessMemoryInfo(process.get(), &memory, sizeof(memory));
    FILETIME creation, exit, kernel, user;
    GetProcessTimes(process.get(), &creation, &exit, &kernel, &user);
  }
}

void BareTelemetry() {
  FILETIME idle, kernel, user;
  GetSystemTimes(&idle, &kernel, &user);
  MEMORYSTATUSEX memory = {};
  memory.dwLength = sizeof(memory);
  GlobalMemoryStatusEx(&memory);
  wchar_t roots[256] = {};
  GetLogicalDriveStringsW(256, roots);
  ULARGE_INTEGER total, free;
  for (const wchar_t* root = roots; *root; root += wcslen(root) + 1)
    if (GetDriveTypeW(root) == DRIVE_FIXED) GetDiskFreeSpaceExW(root, nullptr, &total, &free);
  std::vector<BYTE> table(1 << 16);
  ULONG sizes[2] = {};
  for (int call = 0; call < 2; ++call) {  // once for the size, once for the content
    GetIfTable(reinterpret_cast<MIB_IFTABLE*>(table.data()), &sizes[0], FALSE);
    const auto adapters = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(table.data());
    GetAdaptersAddresses(AF_UNSPEC, 15, nullptr, adapters, &sizes[1]);
  }
  SYSTEM_POWER_STATUS power;
  GetSystemPowerStatus(&power);
}

void PumpOneReply() {
  MSG message = {};
  while (message.message != WM_POST_JSON && GetMessageA(&message, nullptr, 0, 0) > 0)
    DispatchMessageA(&message);
}

// Measures from the text of a request to the message that delivers its reply.
void Dispatch() {
  static const bool made = CreateMainWindow(GetModuleHandleW(nullptr), SW_HIDE);
  ActionDispatcher(Actions()).Dispatch(LR"({"action":"testBridge","requestId":7,"data":{}})");
  if (made) PumpOneReply();
}

void BareDispatch() {
  static const HWND window = CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
  OutputDebugStringW(L"[Varnel Debug] PostJsonToJs: calling PostMessageW...\n");
  PostMessageW(window, WM_POST_JSON, 0, 0);
  OutputDebugStringW(L"[Varnel Debug] PostMessageW queued successfully.\n");
  PumpOneReply();
}

// Runs a program until it shows its window, otherwise until it ends. Returns its peak memory in bytes.
size_t Run(const wchar_t* arguments, const wchar_t* title) {
  std::wstring command = L"\"" + GetExeDirectory() + L"\\" + arguments;
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  PROCESS_MEMORY_COUNTERS memory = {};
  CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started);
  const KernelHandle process(started.hProcess), thread(started.hThread);
  if (!process) std::exit(1);
  size_t peak_bytes = 0;  // Wine forgets it once the process has ended
  while (WaitForSingleObject(process.get(), 1) == WAIT_TIMEOUT) {
    K32GetProcessMemoryInfo(process.get(), &memory, sizeof(memory));
    peak_bytes = std::max(peak_bytes, memory.PeakWorkingSetSize);
    if (title && IsWindowVisible(FindWindowW(nullptr, title))) TerminateProcess(process.get(), 0);
  }
  return peak_bytes;
}

struct Benchmark {
  std::string_view name;
  double aim;  // as a multiple of the bare calls' time
  int rounds, calls, items;
  void (*ours)();
  void (*bare)();
};
constexpr Benchmark kBenchmarks[] = {
    {"scan", 1.05, 5, 1, 30'000, Scan, BareScan},
    {"measure", 1.05, 5, 1, 30'000, [] { DirectorySize(kTree); },
     [] { BareWalk(kTree, FindExInfoStandard, false); }},
    {"empty", 1.1, 5, 1, 5'000, [] { ClearDirectoryContents(kTree); },
     [] { BareWalk(kTree, FindExInfoStandard, true); }},
    {"processes", 1.1, 51, 1, 0, [] { ListProcesses(); }, BareProcesses},
    {"telemetry", 1.2, 15, 20, 0, [] { SampleTelemetry(); }, BareTelemetry},
    {"dispatch", 1.2, 15, 200, 0, Dispatch, BareDispatch},
    {"start", 1.3, 9, 1, 0, [] { Run(L"Varnel.exe\"", L"Varnel"); },
     [] { Run(L"bench.exe\" window", L"Empty"); }},
};

// Runs both in each round and alternates which goes first. The first round only warms up.
void Compare(const Benchmark& it) {
  std::vector<double> times[2];
  for (int round = 0; round <= it.rounds; ++round) {
    for (const int turn : {round % 2, 1 - round % 2}) {
      if (it.items > 0 && !std::filesystem::exists(kTree + L"\\component0")) MakeTree(kTree, it.items);
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < it.calls; ++i) turn == 0 ? it.ours() : it.bare();
      const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
      if (round > 0) times[turn].push_back(time.count() / it.calls);
    }
  }
  for (auto& of_one : times) std::ranges::sort(of_one);
  const double ours_ms = times[0][times[0].size() / 2], bare_ms = times[1][times[1].size() / 2];
  std::printf("%.2f times the bare calls (aim: at most %.2f), %.3f ms\n", ours_ms / bare_ms, it.aim, ours_ms);
}

}  // namespace

int main(int, char** arguments) {
  const std::string_view name = arguments[1] ? arguments[1] : "";
  if (name == "window") {  // the reference for the program's start
    CreateWindowW(L"STATIC", L"Empty", WS_VISIBLE, 0, 0, 1400, 900, nullptr, nullptr, nullptr, nullptr);
    Sleep(INFINITE);
  } else if (name == "memory" && GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
    // Empties the junk folders of the machine, so it runs only under Wine.
    const size_t peak_bytes = Run(L"Varnel.exe\" --silent-clean", nullptr);
    std::printf("%.1f MB at the peak (aim: under 15 MB)\n", static_cast<double>(peak_bytes) / 1e6);
  } else {
    const auto found = std::ranges::find(kBenchmarks, name, &Benchmark::name);
    if (found == std::end(kBenchmarks)) return 2;
    Compare(*found);
  }
}
