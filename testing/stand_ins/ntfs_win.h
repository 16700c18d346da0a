#pragma once

#include <windows.h>

#include <map>
#include <set>
#include <string>

// Stand-in for what NTFS has and Wine's file system lacks: junctions, symbolic links, and folders
// marked read-only. While it lives, the file calls of this executable (its import table is patched) behave as
// documented for them: a link is listed as a reparse point of size 0, a path through it leads to its target,
// and deleting takes the link alone. One at a time, on one thread.
class StandInNtfs {
 public:
  StandInNtfs();
  ~StandInNtfs();
  StandInNtfs(const StandInNtfs&) = delete;
  StandInNtfs& operator=(const StandInNtfs&) = delete;

  // Make a link `path` to `target`, which need not exist (full paths without prefix). On disk there is an
  // empty folder or file.
  void AddFolderLink(const std::wstring& path, const std::wstring& target, DWORD tag);
  void AddFileLink(const std::wstring& path, const std::wstring& target);

  // The folder `path` becomes a junction to `target` after it was listed: when it is first found not empty.
  void SwapForJunction(const std::wstring& path, const std::wstring& target);

 private:
  struct Link {
    std::wstring target;
    DWORD tag = 0;
    bool is_listed = true;
  };
  struct Hooks;

  static std::wstring Canonical(const std::wstring& path);
  std::wstring Resolve(const std::wstring& path, bool follow_last) const;
  void Adjust(const std::wstring& folder, WIN32_FIND_DATAW& entry) const;

  std::map<std::wstring, Link> links_;          // by canonical path
  std::map<std::wstring, std::wstring> swaps_;  // target by canonical path
  std::set<std::wstring> read_only_folders_;
  std::map<HANDLE, std::wstring> listings_;  // folder by find handle
  std::set<HANDLE> open_links_;
};
