#include "disk/folder_scan.h"

#include <algorithm>

#include "base/extended_path.h"

std::wstring JoinPath(std::wstring_view folder, std::wstring_view name) {
  std::wstring path;
  path.reserve(folder.size() + 1 + name.size());
  path = folder;
  if (!folder.ends_with(L'\\')) path += L'\\';
  return path += name;
}

std::wstring ExtendedReadPath(std::wstring_view path) {
  const auto is_letter = [](wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); };
  if (path.size() < 3 || !is_letter(path[0]) || path.substr(1, 2) != L":\\") return std::wstring(path);
  // Windows would resolve these, but takes them literally behind the prefix.
  const std::wstring closed = JoinPath(path, L"");
  for (const wchar_t* unresolved : {L"/", L"\\\\", L"\\.\\", L"\\..\\"})
    if (closed.find(unresolved) != closed.npos) return std::wstring(path);
  return ExtendedPath(path);
}

void SortFolderEntries(std::vector<FolderEntry>& entries) {
  std::ranges::stable_sort(entries, [](const FolderEntry& a, const FolderEntry& b) {
    return a.is_directory != b.is_directory ? a.is_directory : a.size > b.size;
  });
}
