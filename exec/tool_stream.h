#pragma once

#include <cstdint>
#include <string_view>

#include <nlohmann/json.hpp>

// Posts the messages of a tool that the page follows line by line, each with the members
//   {"requestId":7,"streamType":"stdout","type":"ping_diagnostic_stream"}
// and those of `more`. Texts are UTF-8. Any thread.
class ToolStream {
 public:
  // `type` must outlive the stream.
  ToolStream(std::string_view type, int request_id) : type_(type), request_id_(request_id) {}

  // "status" and "stdout": `text` is the member `message`.
  void Status(std::string_view text) const;
  void Line(std::string_view text, nlohmann::json more = nlohmann::json::object()) const;
  // "exit": `code` is the tool's exit code. The stream of the diagnostics ends without a request id.
  void Exit(int64_t code, nlohmann::json more = nlohmann::json::object()) const;
  void ExitUnnumbered(int64_t code, nlohmann::json more = nlohmann::json::object()) const;

 private:
  void Post(std::string_view stream_type, nlohmann::json members) const;

  std::string_view type_;
  int request_id_;
};
