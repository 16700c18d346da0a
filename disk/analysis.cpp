#include "disk/analysis.h"

#include "base/text.h"

nlohmann::json ToJson(const std::vector<FolderEntry>& entries) {
  nlohmann::json rows = nlohmann::json::array();
  for (const FolderEntry& entry : entries)
    rows.push_back({{"name", WideToUtf8(entry.name)},
                    {"path", WideToUtf8(entry.path)},
                    {"isDirectory", entry.is_directory},
                    {"size", entry.size}});
  return rows;
}

nlohmann::json ToJson(const std::vector<SystemHelper::DiskFileItem>& files) {
  nlohmann::json rows = nlohmann::json::array();
  for (const SystemHelper::DiskFileItem& file : files)
    rows.push_back({{"path", WideToUtf8(file.path)}, {"size", file.size}});
  return rows;
}
