#include "net/environment.h"

#include "base/reply.h"
#include "base/text.h"

namespace {

nlohmann::json ToObject(const EnvVariables& variables) {
  nlohmann::json object = nlohmann::json::object();
  for (const auto& [name, value] : variables) object[WideToUtf8(name)] = WideToUtf8(value);
  return object;
}

}  // namespace

std::string BuildEnvVariables(int request_id, const EnvVariables& user, const EnvVariables& system) {
  nlohmann::json reply = MakeReply("getEnvVariables", true, request_id);
  reply["user"] = ToObject(user);
  reply["system"] = ToObject(system);
  return reply.dump();
}
