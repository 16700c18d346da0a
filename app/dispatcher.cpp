#include "app/dispatcher.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "base/fields.h"
#include "base/json_text.h"
#include "base/page.h"
#include "base/text.h"

namespace {

void Run(std::wstring_view message, std::span<const Action> actions) {
  Request request;
  nlohmann::json& envelope = request.envelope;
  envelope = ParseJson(WideToUtf8(message));
  if (!envelope.is_object() || !envelope.contains("action")) return;
  request.action = envelope["action"].get<std::string>();
  if (envelope.contains("requestId")) request.request_id = ToInteger<int32_t>(envelope["requestId"]);
  if (const auto data = envelope.find("data"); data != envelope.end()) request.data = std::move(*data);
  const auto action = std::ranges::find(actions, request.action, &Action::name);
  if (action != actions.end()) action->run(request);
}

// Posts a failure. A parse error quotes its input byte by byte, so it can end inside a character; such
// bytes are replaced.
void PostFailure(const char* text) noexcept {
  try {
    const nlohmann::json reply = {{"type", "error"}, {"message", text}};
    PostJsonToJs(reply.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
  } catch (...) {
    // There is no memory left even for this reply, and no other way to reach the page.
  }
}

}  // namespace

void ActionDispatcher::Dispatch(std::wstring_view message) const noexcept {
  try {
    Run(message, actions_);
  } catch (const std::exception& error) {
    PostFailure(error.what());
  } catch (...) {
    PostFailure("unknown exception");
  }
}
