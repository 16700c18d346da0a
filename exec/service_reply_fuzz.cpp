#include <stdexcept>

#include "exec/service_protocol.h"
#include "testing/fuzz_target.h"

// Whatever the service sends can be read as a reply and as a record, and can be serialised again for the
// page.
FUZZ_TARGET(service_reply, bytes) {
  const nlohmann::json reply = ParseServiceReply(bytes);
  const std::string again = reply.dump();
  if (ParseServiceReply(again) != reply) throw std::logic_error("a reply changed on its way through text");
  ReplySuccess(reply);
  ReplyCount(reply, "windowsTempBytes", 0);
  static_cast<void>(nlohmann::json(ReplyText(reply, "error", "")).dump());

  const StreamRecord record = ParseStreamRecord(bytes);
  static_cast<void>(nlohmann::json(record.message).dump());
}
