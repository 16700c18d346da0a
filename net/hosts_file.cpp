#include "net/hosts_file.h"

#include "base/reply.h"
#include "base/text.h"
#include "exec/service_protocol.h"

namespace {

std::string Build(int request_id, bool success, const std::string& content) {
  nlohmann::json reply = MakeReply("getHostsFile", success, request_id);
  reply["content"] = content;
  return reply.dump();
}

}  // namespace

std::string BuildHostsFile(int request_id, const std::string& bytes) {
  return Build(request_id, true, FileTextToUtf8(bytes));
}

std::string BuildHostsFileFromService(int request_id, const nlohmann::json& answer) {
  return Build(request_id, ReplySuccess(answer), ReplyText(answer, "content", ""));
}
