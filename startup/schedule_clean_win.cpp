#include "startup/schedule_clean_win.h"

#include "base/exe_directory_win.h"
#include "base/page.h"
#include "base/reply.h"
#include "base/text.h"
#include "exec/service_pipe_win.h"

void toggleScheduleClean(int request_id, bool enabled) {
  // The installed name, whatever the running file is called: the schedule must outlive a renamed copy.
  const std::string exe_path = WideToUtf8(GetExeDirectory() + L"\\Varnel.exe");
  const bool success =
      SendServiceCommand("toggleScheduleClean", {{"enabled", enabled}, {"exePath", exe_path}});
  PostJsonToJs(MakeReply("toggleScheduleClean", success, request_id).dump());
}
