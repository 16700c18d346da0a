#include "net/ports_win.h"

#include "base/page.h"
#include "exec/command_runner_win.h"
#include "net/ports.h"

nlohmann::json GetListeningPorts() {
  const CmdResult result = ExecuteCmd(L"cmd.exe /c netstat -ano");
  return result.started ? ParseListeningPorts(result.output) : nlohmann::json::array();
}

void getOpenPorts(int request_id) {
  PostJsonToJs(BuildOpenPorts(request_id, GetListeningPorts()));
}
