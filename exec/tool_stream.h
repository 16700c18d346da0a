#pragma once

#include <cstdint>
#include <string_view>

#include <nlohmann/json.hpp>

// Posts the messages of a tool that the page follows line by line, on any thread. Each message has the
// members
//   {"requestId":7,"streamType":"stdout","type":"ping_diagnostic_stream"}
// and those of `more`. Texts are UTF-8.
class ToolStream {
 public:
  // `type` must outlive the stream.
  ToolStream(std::string_view type, int request_id) : type_(type), request_id_(request_id) {}

  // Post "status" and "stdout" with `text` as the member `message`.
  void Status(std::string_view text) const;
  void Line(std::string_view text, nlohmann::json more = nlohmann::json::object()) const;
  // Post "exit" with the tool's exit code as `code`. The diagnostics stream ends without a request ID.
  void Exit(int64_t code, nlohmann::json more = nlohmann::json::object()) const;
  void ExitUnnumbered(int64_t code, nlohmann::json more = nlohmann::json::object()) const;

 private:
  void Post(std::string_view stream_type, nlohmann::json members) const;

  std::string_view type_;
  int request_id_;
};
