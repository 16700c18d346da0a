#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// One request of the page: {"action":"killProcess","data":{"pid":4242},"requestId":7}. Handlers
// read members with the JSON library's typed accessors and let its exceptions out; the dispatcher
// turns them into the failure reply.
struct Request {
  std::string action;
  int32_t request_id = 0;
  nlohmann::json data;      // the arguments; null if there are none
  nlohmann::json envelope;  // the request; its data is taken out
};

struct Action {
  std::string_view name;
  void (*run)(Request& request);
};

// Decodes the page's requests and runs their actions on the calling (UI) thread. Every outcome is a posted
// reply or nothing.
class ActionDispatcher {
 public:
  // `actions` are compared in this order and have to outlive the dispatcher.
  explicit ActionDispatcher(std::span<const Action> actions) : actions_(actions) {}

  // `message` is one web message in UTF-16. Text that is no request and unknown actions are ignored; whatever
  // is thrown on the way is answered with {"message":...,"type":"error"}.
  void Dispatch(std::wstring_view message) const noexcept;

 private:
  std::span<const Action> actions_;
};
