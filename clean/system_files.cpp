#include "clean/system_files.h"

#include <utility>

#include "base/reply.h"

namespace {

nlohmann::json ToJson(const SystemFileInfo& file) {
  return {{"exists", file.exists}, {"size", file.size_bytes}};
}

}  // namespace

std::string BuildSystemFilesReply(int request_id, const SystemFiles& files) {
  nlohmann::json hiberfil = ToJson(files.hiberfil);
  hiberfil["enabled"] = files.hibernation_enabled;
  nlohmann::json reply = MakeReply("getSystemFilesAdvisor", true, request_id);
  reply["hiberfil"] = std::move(hiberfil);
  reply["pagefile"] = ToJson(files.pagefile);
  reply["swapfile"] = ToJson(files.swapfile);
  return reply.dump();
}

std::string BuildHibernationReply(int request_id, bool success, bool enabled) {
  nlohmann::json reply = MakeReply("setHibernation", success, request_id);
  reply["enabled"] = enabled;
  return reply.dump();
}
