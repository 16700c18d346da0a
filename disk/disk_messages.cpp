#include "disk/disk_messages.h"

#include <nlohmann/json.hpp>

#include "base/text.h"

using nlohmann::json;

namespace {

json Rows(const std::vector<FolderEntry>& entries) {
  json rows = json::array();
  for (const FolderEntry& entry : entries)
    rows.push_back({{"name", WideToUtf8(entry.name)},
                    {"path", WideToUtf8(entry.path)},
                    {"isDirectory", entry.is_directory},
                    {"size", entry.size}});
  return rows;
}

json Rows(const std::vector<SystemHelper::DiskFileItem>& files) {
  json rows = json::array();
  for (const SystemHelper::DiskFileItem& file : files)
    rows.push_back({{"path", WideToUtf8(file.path)}, {"size", file.size}});
  return rows;
}

}  // namespace

std::string DiskProgressMessage(int request_id, int scanned, std::wstring_view current_folder) {
  return json{{"type", "disk_analysis_progress"},
              {"status", "scanning"},
              {"scanned", scanned},
              {"currentFolder", WideToUtf8(current_folder)},
              {"requestId", request_id}}
      .dump();
}

std::string DiskDoneMessage(int request_id, std::string_view drive, const std::vector<FolderEntry>& folders,
                            const std::vector<SystemHelper::DiskFileItem>& files, bool is_complete) {
  return json{{"type", "disk_analysis_progress"},
              {"status", "done"},
              {"success", is_complete},
              {"requestId", request_id},
              {"drive", drive},
              {"folders", Rows(folders)},
              {"files", Rows(files)}}
      .dump();
}

std::string FolderContentsMessage(int request_id, std::string_view path,
                                  const std::vector<FolderEntry>& items) {
  return json{{"type", "getFolderContents"},
              {"success", true},
              {"requestId", request_id},
              {"path", path},
              {"items", Rows(items)}}
      .dump();
}
