#pragma once

#include <string>
#include <vector>

#include "disk/folder_scan.h"

namespace SystemHelper {

// Measures the whole tree under `root`, a drive such as "C:\" or any folder: `folder_sizes` gets the bytes of
// every folder (the root with and without its trailing backslash), `files` the 30 largest files, largest
// first. Both are cleared first and stay empty when the root cannot be read; a folder that cannot be read
// counts as 0. Junctions and symbolic links are neither counted nor followed. One task reads each folder of
// the root; `progress` (may be empty) is called from these tasks, at once, at every 5000th item.
// Throws std::bad_alloc when a folder of the root could not be measured for want of memory; the outputs then
// hold the others. FindFirstFileExW with basic information and large fetch.
void AnalyzeDiskSpace(const std::wstring& root, FolderSizes& folder_sizes, std::vector<DiskFileItem>& files,
                      ScanProgress progress);

}  // namespace SystemHelper

// The folder's entries, links included: directories first, then by size. Directories take their size from
// `folder_sizes`. Empty when the folder cannot be read.
std::vector<FolderEntry> ListFolderContents(const std::wstring& path, const FolderSizes& folder_sizes);
