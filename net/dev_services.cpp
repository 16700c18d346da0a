#include "net/dev_services.h"

#include "base/reply.h"
#include "exec/service_protocol.h"

std::string BuildDevServices(int request_id, const nlohmann::json& answer) {
  nlohmann::json reply = MakeReply("getDevServices", ReplySuccess(answer), request_id);
  reply["services"] = nlohmann::json::array();
  if (answer.is_object() && answer.contains("services") && answer["services"].is_array())
    reply["services"] = answer["services"];
  return reply.dump();
}
