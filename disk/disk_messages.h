#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "disk/folder_scan.h"

// The disk view's messages as JSON documents (UTF-8). Paths with half a surrogate pair carry U+FFFD in its
// place. `drive` and `path` are the request's own texts.

std::string DiskProgressMessage(int request_id, int scanned, std::wstring_view current_folder);
// `is_complete` is false when only a part could be analysed.
std::string DiskDoneMessage(int request_id, std::string_view drive, const std::vector<FolderEntry>& folders,
                            const std::vector<SystemHelper::DiskFileItem>& files, bool is_complete);
std::string FolderContentsMessage(int request_id, std::string_view path,
                                  const std::vector<FolderEntry>& items);
