#include "net/dev_services_win.h"

#include "base/page.h"
#include "base/reply.h"
#include "exec/service_pipe_win.h"
#include "net/dev_services.h"

void getDevServices(int request_id) {
  nlohmann::json answer;
  if (EnsureServiceOrNotify()) answer = SendServiceRequest("get_dev_services", {});
  PostJsonToJs(BuildDevServices(request_id, answer));
}

void controlDevService(int request_id, const std::string& service_type, const std::string& command) {
  const bool success =
      SendServiceCommand("control_dev_service", {{"service_type", service_type}, {"command", command}});
  PostJsonToJs(MakeReply("controlDevService", success, request_id).dump());
}
