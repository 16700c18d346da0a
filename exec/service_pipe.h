#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Client of the helper service, \\.\pipe\VarnelServicePipe (CreateFileW, WaitNamedPipeW, WriteFile,
// FlushFileBuffers, ReadFile). Every call opens and closes its own connection, blocks, and is safe on
// any thread.

// Returns true if the pipe can be opened. Makes five attempts, about 250 ms if there is no service.
// Writes nothing.
bool IsServiceRunning();

// Does the same, but also tells the page to show its dialog if the service is not running. Every action
// that cannot do without the service calls this first.
bool EnsureServiceOrNotify();

// Sends one request and returns the service's answer, which may be any JSON value; read it with the
// functions of exec/service_protocol.h. On failure, returns {"error":...,"success":false} with "Service
// not running" (after five attempts, at least 500 ms), "Write failed" (also if `data` holds text that is
// not UTF-8), "Empty response" or "Parse failed". Sends null `data` as {}. Sets no time limit for the
// service. Never throws.
nlohmann::json SendServiceRequest(std::string_view action, const nlohmann::json& data);

// Calls EnsureServiceOrNotify, then SendServiceRequest, for requests of which only the outcome matters.
// Returns true if the service is running and answers with `success` true.
bool SendServiceCommand(std::string_view action, const nlohmann::json& data);

struct ServiceExit {
  int64_t code = 0;  // 0: success
  bool reboot_required = false;
};

struct ServiceSession {
  bool connected = false;  // false if the pipe could not be opened and nothing was sent
  // Empty if the session broke off before the exit record or at a mistyped one. In that case, no final
  // message is sent to the page.
  std::optional<ServiceExit> exit;
};

// Sends one request and calls `on_output` with each output line of the service (UTF-8) until its exit
// record. Opens the pipe once, without retrying: call EnsureServiceOrNotify first. Skips lines that are
// not JSON, and records of other types.
ServiceSession RunServiceSession(std::string_view action, const nlohmann::json& data,
                                 const std::function<void(const std::string& message)>& on_output);
