#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "disk/folder_scan.h"

// Worker bodies of the disk view. Texts are UTF-8. Both end with one message to the page and never fail:
// a value that cannot be read is empty or 0.

// Measures `drive` and posts a progress message per 5000 items, then the drive's folders and the largest
// files. `success` is false if there was memory for a part only. The new folder sizes replace those of
// the previous analysis; no sizes are known between the start and the end. Concurrent analyses do not
// disturb each other, and the sizes of the one that ends last are kept.
void startDiskAnalysis(int request_id, const std::string& drive);

// Posts the entries of `path`, with folder sizes from the last analysis.
void getFolderContents(int request_id, const std::string& path);

namespace SystemHelper {

// Measures the whole tree under `root`, a drive such as "C:\" or any folder. `folder_sizes` receives the
// bytes of every folder (the root with and without its trailing backslash), `files` the 30 largest
// files, largest first. Both are cleared first and stay empty if the root cannot be read; a folder that
// cannot be read counts as 0. Junctions and symbolic links are neither counted nor followed. One task
// reads each folder of the root. `progress`, if set, is called once per 5000 items, possibly from
// several of these tasks concurrently. Throws std::bad_alloc if a folder of the root could not be
// measured for lack of memory; the outputs then hold the others. Uses FindFirstFileExW with basic
// information and large fetch.
void AnalyzeDiskSpace(const std::wstring& root, FolderSizes& folder_sizes, std::vector<DiskFileItem>& files,
                      ScanProgress progress);

}  // namespace SystemHelper

// Returns the folder's entries, links included: directories first, then by size. Directories take their
// size from `folder_sizes`. Returns none if the folder cannot be read.
std::vector<FolderEntry> ListFolderContents(const std::wstring& path, const FolderSizes& folder_sizes);

// Return the rows of the page's tables. An unpaired surrogate in a path becomes U+FFFD.
nlohmann::json ToJson(const std::vector<FolderEntry>& entries);
nlohmann::json ToJson(const std::vector<SystemHelper::DiskFileItem>& files);
