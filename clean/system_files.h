#pragma once

#include <cstdint>
#include <optional>

#include <nlohmann/json.hpp>

// Replies with the sizes of C:\hiberfil.sys, C:\pagefile.sys and C:\swapfile.sys (GetFileAttributesExW) and
// whether hibernation is on (HibernateEnabled in the registry). Worker body.
void getSystemFilesAdvisor(int request_id);

// Has the helper service switch hibernation on, or off if `enabled` is false or missing. Without the
// service, tells the page so. Worker body.
void setHibernation(int request_id, std::optional<bool> enabled);

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

// Returns the members of the page's reply.
nlohmann::json ToJson(const SystemFiles& files);
