#include "base/page.h"

void PostReply(std::string_view type, int request_id, bool success, nlohmann::json members) {
  members.update({{"type", type}, {"success", success}, {"requestId", request_id}});
  PostJsonToJs(members.dump());
}
