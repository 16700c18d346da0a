#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Client of the helper service, \\.\pipe\VarnelServicePipe (CreateFileW, WaitNamedPipeW, WriteFile,
// FlushFileBuffers, ReadFile). Every call opens its own connection and closes it. All of it blocks and is
// safe on any thread.

// True when the pipe can be opened. Five attempts, about 250 ms without a service; nothing is written.
bool IsServiceRunning();

// The same; when it is not, the page is told to show its dialog. Every action that cannot do without the
// service calls this first.
bool EnsureServiceOrNotify();

// Sends one request and returns the service's answer, any JSON value; read it with the functions of
// exec/service_protocol.h. On failure {"error":...,"success":false} with "Service not running"
// (after five attempts, at least 500 ms), "Write failed" (also when `data` holds text that is not
// UTF-8), "Empty response" or "Parse failed". Null `data` is sent as {}. There is no time limit on
// the service's side. Never throws.
nlohmann::json SendServiceRequest(std::string_view action, const nlohmann::json& data);

// EnsureServiceOrNotify and SendServiceRequest for work of which only the outcome matters: true when the
// service is there and answers with `success` true.
bool SendServiceCommand(std::string_view action, const nlohmann::json& data);

struct ServiceExit {
  int64_t code = 0;  // 0: success
  bool reboot_required = false;
};

struct ServiceSession {
  bool connected = false;  // false: the pipe could not be opened, nothing was sent
  // Nothing when the session broke off before the exit record or at a mistyped one: no final message then.
  std::optional<ServiceExit> exit;
};

// Sends one request and calls `on_output` with each output line of the service (UTF-8) until its exit record.
// Opens the pipe once, without retry: call EnsureServiceOrNotify first. Lines that are not JSON and records
// of other types are skipped.
ServiceSession RunServiceSession(std::string_view action, const nlohmann::json& data,
                                 const std::function<void(const std::string& message)>& on_output);
