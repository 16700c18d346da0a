// Measures the cleaner's walks against the bare calls that they are made of, on trees below the temporary
// folder: clean_bench [files to measure] [files to delete] [rounds].
#include <windows.h>
#include <psapi.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/exe_directory_win.h"
#include "base/file_walk_win.h"
#include "base/handle_win.h"
#include "testing/bench/measure.h"
#include "testing/temp_folder_win.h"

namespace {

constexpr int kMeasureRounds = 20;

bool IsDots(const wchar_t* name) {
  return name[0] == L'.' && (name[1] == 0 || (name[1] == L'.' && name[2] == 0));
}

// Fifty files a folder, ten folders in each folder above.
void MakeTree(const std::wstring& folder, int files) {
  CreateDirectoryW(folder.c_str(), nullptr);
  for (int i = 0; i < std::min(files, 50); ++i) {
    const FileHandle file(CreateFileW((folder + L"\\component_" + std::to_wstring(i) + L".tmp").c_str(),
                                      GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    SetFilePointer(file.get(), 1000 + i, nullptr, FILE_BEGIN);
    SetEndOfFile(file.get());
  }
  int left = files - 50;
  for (int i = 0; left > 0; ++i) {
    const int share = std::min(left, std::max(50, (files - 50) / 10 + 1));
    MakeTree(folder + L"\\folder_" + std::to_wstring(i), share);
    left -= share;
  }
}

uint64_t BareSize(const std::wstring& folder) {
  uint64_t size_bytes = 0;
  WIN32_FIND_DATAW entry;
  const FindHandle find(FindFirstFileW((folder + L"\\*").c_str(), &entry));
  if (!find) return 0;
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
      size_bytes += entry.nFileSizeLow;
    else if (!IsDots(entry.cFileName))
      size_bytes += BareSize(folder + L"\\" + entry.cFileName);
  } while (FindNextFileW(find.get(), &entry));
  return size_bytes;
}

void BareDelete(const std::wstring& folder) {
  WIN32_FIND_DATAW entry;
  FindHandle find(FindFirstFileW((folder + L"\\*").c_str(), &entry));
  if (!find) return;
  do {
    if (IsDots(entry.cFileName)) continue;
    const std::wstring path = folder + L"\\" + entry.cFileName;
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      DeleteFileW(path.c_str());
    } else {
      BareDelete(path);
      RemoveDirectoryW(path.c_str());
    }
  } while (FindNextFileW(find.get(), &entry));
}

// It empties the junk folders of the machine, so only of Wine's.
void MeasureSilentClean() {
  std::wstring command = L"\"" + GetExeDirectory() + L"\\Varnel.exe\" --silent-clean";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  if (!IsWine() || !CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &startup, &started)) {
    std::puts("silent clean: not measured (no Varnel.exe here, or not under Wine)");
    return;
  }
  const KernelHandle process(started.hProcess), thread(started.hThread);
  // Wine no longer knows the figure once the process has ended.
  SIZE_T peak_bytes = 0;
  do {
    PROCESS_MEMORY_COUNTERS memory = {};
    GetProcessMemoryInfo(process.get(), &memory, sizeof(memory));
    peak_bytes = std::max(peak_bytes, memory.PeakWorkingSetSize);
  } while (WaitForSingleObject(process.get(), 1) == WAIT_TIMEOUT);
  DWORD exit_code = 1;
  GetExitCodeProcess(process.get(), &exit_code);
  std::printf("silent clean: exit code %lu, peak %.1f MB (aim: under 15 MB)\n", exit_code,
              static_cast<double>(peak_bytes) / 1e6);
}

int Argument(int count, char** texts, int index, int fallback) {
  return count > index ? std::atoi(texts[index]) : fallback;
}

}  // namespace

int main(int count, char** texts) {
  const int measured = Argument(count, texts, 1, 100'000);
  const int deleted = Argument(count, texts, 2, 50'000);
  const int rounds = Argument(count, texts, 3, 5);
  const TempFolder temp;
  const std::wstring tree = temp.path + L"\\tree";

  MakeTree(tree, measured);
  uint64_t our_size = 0, bare_size = 0;
  Compare(("measure " + std::to_string(measured) + " files").c_str(), 1.05, kMeasureRounds,
          [&] { return Milliseconds([&] { our_size = DirectorySize(tree); }); },
          [&] { return Milliseconds([&] { bare_size = BareSize(tree); }); });
  ClearDirectoryContents(tree);
  if (our_size != bare_size || DirectorySize(tree) != 0) {
    std::puts("FAILED: sizes differ, or the tree could not be emptied");
    return 1;
  }

  const auto on_new_tree = [&](void (*empty)(const std::wstring&)) {
    MakeTree(tree, deleted);
    return Milliseconds([&] { empty(tree); });
  };
  Compare(("empty " + std::to_string(deleted) + " files").c_str(), 1.1, rounds,
          [&] { return on_new_tree(ClearDirectoryContents); }, [&] { return on_new_tree(BareDelete); });
  MeasureSilentClean();
}
