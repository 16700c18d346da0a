#include "startup/schedule_clean.h"

#include "base/exe_directory.h"
#include "base/page.h"
#include "base/text.h"
#include "exec/service_pipe.h"

void toggleScheduleClean(int request_id, bool enabled) {
  // Uses the installed name, not that of the running file: the schedule must outlive a renamed copy.
  const std::string exe_path = WideToUtf8(GetExeDirectory() + L"\\Varnel.exe");
  const bool success =
      SendServiceCommand("toggleScheduleClean", {{"enabled", enabled}, {"exePath", exe_path}});
  PostReply("toggleScheduleClean", request_id, success);
}
