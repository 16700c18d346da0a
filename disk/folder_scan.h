#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <future>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "disk/largest_files.h"

// The walk itself, independent of the calls that read a folder. A `Reader` is
//   bool read(const std::wstring& pattern, visit)
// It calls visit(const FoundEntry&) for every entry that matches "<folder>\*" and returns false if the
// folder cannot be read. Several threads call it concurrently.

struct FoundEntry {
  const wchar_t* name;  // valid during the visit
  bool is_directory;
  bool is_reparse_point;  // junction or symbolic link
  uint64_t size;          // bytes
};

// Bytes per folder, including its subfolders, by full path.
using FolderSizes = std::unordered_map<std::wstring, uint64_t>;

// Called with the number of items seen so far and the folder being read, from any thread of the scan.
using ScanProgress = std::function<void(int, std::wstring)>;
inline constexpr int kItemsPerProgress = 5000;

// One row of a folder listing.
struct FolderEntry {
  std::wstring name;
  std::wstring path;
  bool is_directory = false;
  uint64_t size = 0;  // bytes; of a folder: from the last analysis, 0 if it was not part of it
};

// Joins "C:\" or "C:\a" and "b" into "C:\b" or "C:\a\b".
std::wstring JoinPath(std::wstring_view folder, std::wstring_view name);

// Returns the path by which a folder is read: the extended form of a plain full path on a drive, any
// other path unchanged. See base/extended_path.h.
std::wstring ExtendedReadPath(std::wstring_view path);

// Sorts directories before files, then by descending size. Equal entries keep their order.
void SortFolderEntries(std::vector<FolderEntry>& entries);

// Returns true for "." and "..", which every folder except a root reports.
inline bool IsDotEntry(const wchar_t* name) {
  return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

inline bool IsCounted(const FoundEntry& entry) {
  return !entry.is_reparse_point && !IsDotEntry(entry.name);
}

// One depth-first walk. The current path and the names of subfolders still to be read live in two
// growing texts, so files and folders along the way cost no string of their own.
template <typename Reader>
class FolderScan {
 public:
  FolderScan(const Reader& read, std::wstring_view folder, FolderSizes& folder_sizes,
             LargestFiles& largest_files, std::atomic<int32_t>& counter, const ScanProgress& progress)
      : read_(read),
        folder_sizes_(folder_sizes),
        largest_files_(largest_files),
        counter_(counter),
        progress_(progress),
        path_(ExtendedReadPath(folder)),
        prefix_length_(path_.size() - folder.size()) {}

  uint64_t Run() {
    const size_t names_begin = names_.size(), path_end = path_.size();
    uint64_t total = ReadFolder();
    const size_t names_end = names_.size();
    for (size_t at = names_begin; at < names_end;) {
      const size_t length = std::char_traits<wchar_t>::length(names_.c_str() + at);
      if (path_.back() != L'\\') path_ += L'\\';
      path_.append(names_, at, length);
      at += length + 1;
      total += Run();
      path_.resize(path_end);
    }
    names_.resize(names_begin);
    folder_sizes_.insert_or_assign(std::wstring(Folder(path_end)), total);
    return total;
  }

 private:
  // Returns the bytes of the folder's own files, 0 if it cannot be read. Appends its subfolders to
  // names_.
  uint64_t ReadFolder() {
    const size_t path_end = path_.size();
    uint64_t bytes = 0;
    path_ += path_.ends_with(L'\\') ? L"*" : L"\\*";
    read_(path_, [&](const FoundEntry& entry) {
      if (!IsCounted(entry)) return;
      const int count = counter_.fetch_add(1, std::memory_order_relaxed) + 1;
      if (count % kItemsPerProgress == 0 && progress_) progress_(count, std::wstring(Folder(path_end)));
      if (entry.is_directory) {
        names_.append(entry.name) += L'\0';
      } else {
        bytes += entry.size;
        largest_files_.Offer(entry.size, [&] { return JoinPath(Folder(path_end), entry.name); });
      }
    });
    path_.resize(path_end);
    return bytes;
  }

  std::wstring_view Folder(size_t path_end) const {
    return std::wstring_view(path_).substr(prefix_length_, path_end - prefix_length_);
  }

  const Reader& read_;
  FolderSizes& folder_sizes_;
  LargestFiles& largest_files_;
  std::atomic<int32_t>& counter_;
  const ScanProgress& progress_;
  std::wstring path_;
  const size_t prefix_length_;
  std::wstring names_;  // each ends with a NUL
};

// Returns the bytes of `path` with all subfolders and records each of them in `folder_sizes`. A folder
// that cannot be read counts as 0. `counter` counts items and may be shared with other scans.
template <typename Reader>
uint64_t ScanFolder(const Reader& read, std::wstring_view path, FolderSizes& folder_sizes,
                    LargestFiles& largest_files, std::atomic<int32_t>& counter,
                    const ScanProgress& progress) {
  return FolderScan<Reader>(read, path, folder_sizes, largest_files, counter, progress).Run();
}

// Implements SystemHelper::AnalyzeDiskSpace over any reader. Exceptions of the reader pass through.
template <typename Reader>
void AnalyzeFolders(const Reader& read, std::wstring root, FolderSizes& folder_sizes,
                    std::vector<SystemHelper::DiskFileItem>& files, const ScanProgress& progress) {
  struct BranchResult {
    uint64_t total_size = 0;
    FolderSizes folder_sizes;
    std::vector<SystemHelper::DiskFileItem> files;
  };

  folder_sizes.clear();
  files.clear();
  if (!root.ends_with(L'\\')) root += L'\\';
  std::atomic<int32_t> counter = 0;
  uint64_t total = 0;
  LargestFiles largest_files;
  std::vector<std::wstring> branches;
  const bool readable = read(ExtendedReadPath(root) + L"*", [&](const FoundEntry& entry) {
    if (!IsCounted(entry)) return;
    counter.fetch_add(1, std::memory_order_relaxed);
    if (entry.is_directory) {
      branches.push_back(root + entry.name);
    } else {
      total += entry.size;
      largest_files.Offer(entry.size, [&] { return root + entry.name; });
    }
  });
  if (!readable) return;

  const auto scan_branch = [&](const std::wstring& branch) {
    BranchResult result;
    LargestFiles branch_files;
    result.total_size = ScanFolder(read, branch, result.folder_sizes, branch_files, counter, progress);
    result.files = branch_files.TakeLargestFirst();
    return result;
  };
  std::vector<std::future<BranchResult>> tasks;
  tasks.reserve(branches.size());
  for (const std::wstring& branch : branches) {
    try {
      tasks.push_back(std::async(std::launch::async, scan_branch, std::cref(branch)));
    } catch (const std::system_error&) {  // no more threads: it is scanned when its turn comes
      tasks.push_back(std::async(std::launch::deferred, scan_branch, std::cref(branch)));
    }
  }
  std::exception_ptr failure;
  for (std::future<BranchResult>& task : tasks) {
    try {
      BranchResult result = task.get();
      total += result.total_size;
      folder_sizes.merge(result.folder_sizes);
      for (SystemHelper::DiskFileItem& file : result.files)
        largest_files.Offer(file.size, [&] { return std::move(file.path); });
    } catch (const std::exception&) {
      failure = std::current_exception();
    }
  }

  folder_sizes[root] = total;
  if (root.size() > 1) folder_sizes[root.substr(0, root.size() - 1)] = total;
  files = largest_files.TakeLargestFirst();
  if (failure) std::rethrow_exception(failure);
}

// Implements SystemHelper::ListFolderContents over any reader. Lists a link as a folder or a file, by
// its attributes.
template <typename Reader>
std::vector<FolderEntry> ListFolder(const Reader& read, const std::wstring& path,
                                    const FolderSizes& folder_sizes) {
  std::vector<FolderEntry> entries;
  read(JoinPath(ExtendedReadPath(path), L"*"), [&](const FoundEntry& found) {
    if (IsDotEntry(found.name)) return;
    FolderEntry& entry = entries.emplace_back(
        FolderEntry{found.name, JoinPath(path, found.name), found.is_directory, found.size});
    if (!entry.is_directory) return;
    const auto cached = folder_sizes.find(entry.path);
    entry.size = cached == folder_sizes.end() ? 0 : cached->second;
  });
  SortFolderEntries(entries);
  return entries;
}
