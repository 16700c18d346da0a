#include "exec/streaming_command.h"

#include <nlohmann/json.hpp>

#include "base/text.h"

namespace {

nlohmann::json StreamMessage(const char* stream_type) {
  return {{"type", "ping_diagnostic_stream"}, {"streamType", stream_type}};
}

}  // namespace

std::wstring BuildDiagnosticCommand(std::string_view type, std::string_view target) {
  return (type == "dns" ? L"nslookup " : L"ping -n 4 ") + Utf8ToWide(target);
}

std::string BuildStreamLine(int request_id, std::string_view line) {
  nlohmann::json message = StreamMessage("stdout");
  message["requestId"] = request_id;
  message["message"] = ConsoleTextToUtf8(line);
  return message.dump();
}

std::string BuildStreamExit(uint32_t exit_code) {
  nlohmann::json message = StreamMessage("exit");
  message["code"] = exit_code;
  return message.dump();
}

std::string BuildStreamStartFailure() {
  nlohmann::json message = StreamMessage("exit");
  message["code"] = -1;
  message["error"] = "Failed to start process";
  return message.dump();
}
