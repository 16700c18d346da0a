#include "app/debug_report.h"

#include "base/page.h"

namespace {

void SendLines(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) SendConsoleLog(line, "system-line");
}

}  // namespace

void debugSystem(int request_id) {
  SendLines({"[DebugSystem] Gathering system debug information..."});
  SendLines(FormatDebugSpecs(CollectHardwareSpecs()));
  SendLines(FormatDebugTelemetry(SampleTelemetry()));
  PostReply("debugSystem", request_id, true);
}
