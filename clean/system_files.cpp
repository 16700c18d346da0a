#include "clean/system_files.h"

#include <utility>

namespace {

nlohmann::json ToJson(const SystemFileInfo& file) {
  return {{"exists", file.exists}, {"size", file.size_bytes}};
}

}  // namespace

nlohmann::json ToJson(const SystemFiles& files) {
  nlohmann::json hiberfil = ToJson(files.hiberfil);
  hiberfil["enabled"] = files.hibernation_enabled;
  return {{"hiberfil", std::move(hiberfil)},
          {"pagefile", ToJson(files.pagefile)},
          {"swapfile", ToJson(files.swapfile)}};
}
