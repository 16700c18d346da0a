#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// The helper service's wire format: one compact JSON document (UTF-8) per line, in both directions.

// The longest line accepted from the service. A longer reply counts as one that is not JSON.
inline constexpr size_t kMaxServiceLineBytes = size_t{64} * 1024 * 1024;

// Opens the page's dialog about the helper service not running.
inline constexpr std::string_view kServiceUnavailableMessage = R"({"type":"show_service_error_modal"})";

// Returns {"action":...,"data":...} with its line feed. Null `data` is sent as {}. Throws
// nlohmann::json::type_error if a text in it is not UTF-8, because such a request must not be sent with
// altered bytes.
std::string BuildServiceRequest(std::string_view action, const nlohmann::json& data);

// Returns {"error":...,"success":false}, the client's own answer if the service gave none.
nlohmann::json FailedServiceReply(std::string_view error);

// Returns the value of a reply line (without its line feed), whatever its type. The result is the
// failure "Empty response" for no text, and "Parse failed" for text that is not JSON. Invalid UTF-8 and
// lone surrogates are not JSON either, so every parsed reply can be serialised again. Never throws.
nlohmann::json ParseServiceReply(std::string_view line);

// Return a member of a reply, or `fallback` if the reply is no object, has no such member, or the member
// has another type (for a count: anything but a whole number of at least 0). The fallback of a list is
// an empty one.
bool ReplyFlag(const nlohmann::json& reply, const char* name, bool fallback);
uint64_t ReplyCount(const nlohmann::json& reply, const char* name, uint64_t fallback);
std::string ReplyText(const nlohmann::json& reply, const char* name, std::string_view fallback);
nlohmann::json ReplyList(const nlohmann::json& reply, const char* name);

inline bool ReplySuccess(const nlohmann::json& reply) {
  return ReplyFlag(reply, "success", false);
}

// One line of a streamed session:
//   {"message":"Verification 40% complete.","type":"stdout"}
//   {"code":0,"rebootRequired":true,"type":"exit"}
struct StreamRecord {
  enum class Kind {
    kOutput,    // `message`
    kExit,      // `code`, `reboot_required`
    kIgnored,   // another type, or not JSON
    kMistyped,  // no type, or a member of the wrong JSON type: ends the session without a result
  };
  Kind kind = Kind::kIgnored;
  std::string message;
  int64_t code = 0;
  bool reboot_required = false;
};
StreamRecord ParseStreamRecord(std::string_view line);
