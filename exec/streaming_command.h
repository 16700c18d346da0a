#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "nslookup <target>" for the type "dns" exactly, "ping -n 4 <target>" for any other. The target (UTF-8) is
// appended as it stands: whatever the person types reaches the command interpreter, on purpose.
std::wstring BuildDiagnosticCommand(std::string_view type, std::string_view target);

// The stream's messages, each one compact JSON document. The closing ones carry no request id.
std::string BuildStreamLine(int request_id, std::string_view line);  // `line`: bytes as the tool printed them
std::string BuildStreamExit(uint32_t exit_code);
std::string BuildStreamStartFailure();
