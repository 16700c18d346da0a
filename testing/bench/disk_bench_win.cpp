// Measures the disk analysis against the bare calls that it is made of, on a tree in C:\varnel-bench that is
// made once and kept: disk_bench [items] [rounds].
#include <windows.h>
#include <psapi.h>
#include <winioctl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <random>
#include <string>
#include <vector>

#include "base/handle_win.h"
#include "disk/disk_space.h"
#include "testing/bench/measure.h"

namespace {

constexpr wchar_t kBenchFolder[] = L"C:\\varnel-bench";

// --- the tree ----------------------------------------------------------------------------------------------

// Shaped like a system drive: about four files a folder, most folders small, a few with 2,000 files;
// most files small, a few huge (they hold no data).
class TreeMaker {
 public:
  void MakeDrive(const std::wstring& root, int items) {
    const struct {
      const wchar_t* name;
      double share;
    } tops[] = {{L"Windows", 0.42},
                {L"Users", 0.24},
                {L"Program Files", 0.14},
                {L"ProgramData", 0.1},
                {L"Program Files (x86)", 0.07},
                {L"Recovery", 0.01},
                {L"Intel", 0.005},
                {L"PerfLogs", 0}};
    CreateDirectoryW(root.c_str(), nullptr);
    int left = items - 3;
    for (int i = 0; i < 3; ++i) MakeFile(root + L"\\system" + std::to_wstring(i) + L".sys", 33);
    for (const auto& top : tops) {
      const int share = static_cast<int>(items * top.share) + 1;
      MakeFolder(root + L"\\" + top.name, share);
      left -= share;
    }
    MakeFolder(root + L"\\Data", left);
  }

 private:
  int Below(int limit) { return std::uniform_int_distribution(0, limit - 1)(random_); }

  int FileCount() {
    const int kind = Below(1000);
    return kind < 500 ? Below(8) : kind < 965 ? 4 + Below(20) : 60 + Below(140);
  }

  // One folder with everything in it, `items` in all.
  void MakeFolder(const std::wstring& path, int items) {
    CreateDirectoryW(path.c_str(), nullptr);
    --items;
    int files = items > 20'000 ? 2000 : std::min(FileCount(), items);
    items -= files;
    for (; files > 0; --files)
      MakeFile(path + L"\\component_" + std::to_wstring(++serial_) + L"_x64.dll",
               4 + Below(Below(200) == 0 ? 29 : 18));
    while (items > 0) {
      const int share = std::min(items, 3 + Below(std::max(1, items / 2)));
      MakeFolder(path + L"\\folder_" + std::to_wstring(++serial_), share);
      items -= share;
    }
  }

  static void MakeFile(const std::wstring& path, int size_bits) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    LARGE_INTEGER end;
    end.QuadPart = int64_t{1} << size_bits;
    DWORD returned = 0;
    if (size_bits > 20)
      DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN);
    SetEndOfFile(file.get());
  }

  std::mt19937 random_{20240101};
  int serial_ = 0;
};

std::wstring MakeTreeOnce(int items) {
  const std::wstring tree = kBenchFolder + (L"\\tree-" + std::to_wstring(items));
  const std::wstring complete = tree + L".complete";
  if (GetFileAttributesW(complete.c_str()) == INVALID_FILE_ATTRIBUTES) {
    std::printf("making a tree of %d items\n", items);
    std::fflush(stdout);
    CreateDirectoryW(kBenchFolder, nullptr);
    TreeMaker().MakeDrive(tree, items);
    const FileHandle mark(CreateFileW(complete.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  }
  return tree;
}

// --- what is compared --------------------------------------------------------------------------------------

// The calls alone: counts, and makes the paths of folders because they have to be opened.
int ReadBare(const std::wstring& folder, std::vector<std::wstring>& folders) {
  WIN32_FIND_DATAW found;
  const FindHandle search(FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &found,
                                           FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
  if (!search) return 0;
  int items = 0;
  do {
    if (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT || IsDotEntry(found.cFileName)) continue;
    ++items;
    if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
      folders.push_back(folder + L"\\" + found.cFileName);
  } while (FindNextFileW(search.get(), &found));
  return items;
}

int WalkBare(const std::wstring& folder) {
  std::vector<std::wstring> folders;
  int items = ReadBare(folder, folders);
  for (const std::wstring& inner : folders) items += WalkBare(inner);
  return items;
}

int WalkBareInTasks(const std::wstring& root) {
  std::vector<std::wstring> folders;
  int items = ReadBare(root, folders);
  std::vector<std::future<int>> tasks;
  for (const std::wstring& folder : folders)
    tasks.push_back(std::async(std::launch::async, WalkBare, folder));
  for (std::future<int>& task : tasks) items += task.get();
  return items;
}

// --- measuring ---------------------------------------------------------------------------------------------

// Time on the clock and processor time of this process (under Wine without its server's).
struct Cost {
  double seconds, processor_seconds;
};

double ProcessorSeconds() {
  FILETIME created, exited, kernel, user;
  GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
  const auto ticks = [](FILETIME time) { return uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime; };
  return static_cast<double>(ticks(kernel) + ticks(user)) * 1e-7;
}

template <typename Work>
Cost Measure(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  const double processor_start = ProcessorSeconds();
  work();
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          ProcessorSeconds() - processor_start};
}

PROCESS_MEMORY_COUNTERS_EX Memory() {
  PROCESS_MEMORY_COUNTERS_EX counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                       sizeof(counters));
  return counters;
}

}  // namespace

int main(int argument_count, char** arguments) {
  const int items = argument_count > 1 ? std::atoi(arguments[1]) : 300'000;
  const int rounds = argument_count > 2 ? std::atoi(arguments[2]) : 7;
  const std::wstring root = MakeTreeOnce(items);

  FolderSizes sizes;
  std::vector<SystemHelper::DiskFileItem> files;
  const auto analyze = [&] { SystemHelper::AnalyzeDiskSpace(root, sizes, files, [](int, std::wstring) {}); };
  int found = 0;
  // The first round only warms the system's caches; its memory is that of a fresh process.
  const PROCESS_MEMORY_COUNTERS_EX before = Memory();
  analyze();
  const PROCESS_MEMORY_COUNTERS_EX after = Memory();
  std::vector<double> analysis, tasks, single, to_tasks, to_single, processor_to_tasks;
  for (int round = 0; round < rounds; ++round) {
    // Alternating, so that what else the machine does hits all three alike.
    const Cost of_analysis = Measure(analyze);
    const Cost of_tasks = Measure([&] { found = WalkBareInTasks(root); });
    const Cost of_single = Measure([&] { WalkBare(root); });
    analysis.push_back(of_analysis.seconds);
    tasks.push_back(of_tasks.seconds);
    single.push_back(of_single.seconds);
    to_tasks.push_back(of_analysis.seconds / of_tasks.seconds);
    to_single.push_back(of_analysis.seconds / of_single.seconds);
    processor_to_tasks.push_back(of_analysis.processor_seconds / of_tasks.processor_seconds);
  }
  const auto folders = static_cast<double>(sizes.size() - 1);  // the root is there twice
  std::printf("items %d, folders %.0f, bytes %llu, rounds %d\n", found, folders,
              static_cast<unsigned long long>(sizes[root]), rounds);
  std::printf("analysis                    %8.0f items/s\n", found / Median(analysis));
  std::printf("bare walk, same tasks       %8.0f items/s\n", found / Median(tasks));
  std::printf("bare walk, one thread       %8.0f items/s\n", found / Median(single));
  std::printf("time to bare, same tasks    %8.3f (aim: at most 1.05)\n", Median(to_tasks));
  std::printf("time to bare, one thread    %8.3f\n", Median(to_single));
  std::printf("processor time to bare, same tasks  %.3f\n", Median(processor_to_tasks));
  std::printf("peak memory                 %8.1f MB, of which %.1f MB before\n",
              static_cast<double>(after.PeakWorkingSetSize) / (1 << 20),
              static_cast<double>(before.WorkingSetSize) / (1 << 20));
  std::printf("kept after the analysis     %8.0f bytes/folder\n",
              static_cast<double>(after.WorkingSetSize - before.WorkingSetSize) / folders);
  return 0;
}
