#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

struct SystemFileInfo {
  bool exists = false;
  uint64_t size_bytes = 0;
};

struct SystemFiles {
  SystemFileInfo hiberfil;
  bool hibernation_enabled = false;
  SystemFileInfo pagefile;
  SystemFileInfo swapfile;
};

std::string BuildSystemFilesReply(int request_id, const SystemFiles& files);
std::string BuildHibernationReply(int request_id, bool success, bool enabled);
