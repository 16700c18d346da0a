#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// The helper service's wire format: one compact JSON document in UTF-8 a line, both ways.

// Longest line that is accepted from the service. A longer reply counts as one that is not JSON.
inline constexpr size_t kMaxServiceLineBytes = size_t{64} * 1024 * 1024;

// Opens the page's dialog that says that the helper service is not running.
inline constexpr std::string_view kServiceUnavailableMessage = R"({"type":"show_service_error_modal"})";

// {"action":...,"data":...} with its line feed. Null `data` is sent as {}. Throws nlohmann::json::type_error
// when a text in it is not UTF-8: such a request is better not sent than sent with other bytes.
std::string BuildServiceRequest(std::string_view action, const nlohmann::json& data);

// {"error":...,"success":false}: what the client itself answers when the service did not.
nlohmann::json FailedServiceReply(std::string_view error);

// The value of a reply line (without its line feed), whatever it is. "Empty response" for no text, "Parse
// failed" for text that is not JSON (invalid UTF-8 and lone surrogates included, so every parsed reply can be
// serialised again). Never throws.
nlohmann::json ParseServiceReply(std::string_view line);

// Returns a member of a reply; `fallback` if the reply is no object, has no such member, or it is of another
// type (for a count: anything but a whole number from 0 on). The fallback of a list is an empty one.
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
    kMistyped,  // no type, or a member of another JSON type than agreed: ends the session without a result
  };
  Kind kind = Kind::kIgnored;
  std::string message;
  int64_t code = 0;
  bool reboot_required = false;
};
StreamRecord ParseStreamRecord(std::string_view line);
