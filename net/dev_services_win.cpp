#include "net/dev_services.h"

#include "base/page.h"
#include "exec/service_pipe.h"
#include "exec/service_protocol.h"

void getDevServices(int request_id) {
  nlohmann::json answer;
  if (EnsureServiceOrNotify()) answer = SendServiceRequest("get_dev_services", {});
  PostReply("getDevServices", request_id, ReplySuccess(answer),
            {{"services", ReplyList(answer, "services")}});
}

void controlDevService(int request_id, const std::string& service_type, const std::string& command) {
  const bool success =
      SendServiceCommand("control_dev_service", {{"service_type", service_type}, {"command", command}});
  PostReply("controlDevService", request_id, success);
}
