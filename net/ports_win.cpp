#include "net/ports.h"

#include "base/page.h"
#include "exec/command_runner.h"

namespace {

nlohmann::json GetListeningPorts() {
  return ParseListeningPorts(ExecuteCmd(L"cmd.exe /c netstat -ano").output);
}

}  // namespace

void getOpenPorts(int request_id) {
  PostReply("getOpenPorts", request_id, true, {{"ports", GetListeningPorts()}});
}
