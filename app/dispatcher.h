#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// One request of the page: {"action":"killProcess","data":{"pid":4242},"requestId":7}. Handlers read members
// with the JSON library's typed accessors and let its exceptions out; the dispatcher turns them into the
// failure reply.
struct Request {
  std::string action;
  int32_t request_id = 0;
  nlohmann::json envelope;

  // The arguments. Missing ones read as null, and so do their fields.
  nlohmann::json& Data() { return envelope["data"]; }
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

// Any JSON number or boolean as the library converts it, fractions cut off. The language leaves open what a
// fraction or exponent beyond the type's range becomes: here it is the least value. Throws
// nlohmann::json::type_error for anything else.
template <std::integral Integer>
Integer ToInteger(const nlohmann::json& value) {
  using Limits = std::numeric_limits<Integer>;
  if (!value.is_number_float()) return value.get<Integer>();
  const double number = value.get<double>();
  const bool fits =
      number > static_cast<double>(Limits::min()) - 1.0 && number < static_cast<double>(Limits::max()) + 1.0;
  return fits ? static_cast<Integer>(number) : Limits::min();
}

// Posts {"requestId":...,"success":true,"type":...} with the members of the object `fields`. Move large
// values into it.
void PostSuccess(std::string_view type, int32_t request_id, nlohmann::json fields = nlohmann::json::object());
