#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// One request of the page: {"action":"killProcess","data":{"pid":4242},"requestId":7}. Handlers read
// members with the JSON library's typed accessors and let its exceptions escape; the dispatcher turns
// them into the failure reply.
struct Request {
  std::string action;
  int32_t request_id = 0;
  nlohmann::json data;      // the arguments; null if there are none
  nlohmann::json envelope;  // the request without its data
};

struct Action {
  std::string_view name;
  void (*run)(Request& request);
};

// Decodes the page's requests and runs their actions on the calling (UI) thread. The only outcome is a
// posted reply, or none.
class ActionDispatcher {
 public:
  // Compares `actions` in this order. They must outlive the dispatcher.
  explicit ActionDispatcher(std::span<const Action> actions) : actions_(actions) {}

  // Runs the action of one web message (UTF-16). Ignores text that is no request, and unknown actions.
  // Answers any exception with {"message":...,"type":"error"}.
  void Dispatch(std::wstring_view message) const noexcept;

 private:
  std::span<const Action> actions_;
};
