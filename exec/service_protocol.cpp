#include "exec/service_protocol.h"

#include <exception>

#include "base/json_text.h"

namespace {

using nlohmann::json;

// Returns a member of an object, or null if `value` is no object or has no such member.
const json& MemberOf(const json& value, const char* name) {
  static const json kNull;
  if (!value.is_object()) return kNull;
  const auto member = value.find(name);
  return member == value.end() ? kNull : *member;
}

}  // namespace

std::string BuildServiceRequest(std::string_view action, const json& data) {
  const json request = {{"action", action}, {"data", data.is_null() ? json::object() : data}};
  return request.dump() + '\n';
}

json FailedServiceReply(std::string_view error) {
  return {{"success", false}, {"error", error}};
}

json ParseServiceReply(std::string_view line) {
  if (line.empty()) return FailedServiceReply("Empty response");
  if (line.size() > kMaxServiceLineBytes) return FailedServiceReply("Parse failed");
  try {
    return ParseJson(line);
  } catch (const std::exception&) {
    return FailedServiceReply("Parse failed");
  }
}

bool ReplyFlag(const json& reply, const char* name, bool fallback) {
  const json& member = MemberOf(reply, name);
  return member.is_boolean() ? member.get<bool>() : fallback;
}

uint64_t ReplyCount(const json& reply, const char* name, uint64_t fallback) {
  const json& member = MemberOf(reply, name);
  return member.is_number_unsigned() ? member.get<uint64_t>() : fallback;
}

std::string ReplyText(const json& reply, const char* name, std::string_view fallback) {
  const json& member = MemberOf(reply, name);
  return member.is_string() ? member.get<std::string>() : std::string(fallback);
}

json ReplyList(const json& reply, const char* name) {
  const json& member = MemberOf(reply, name);
  return member.is_array() ? member : json::array();
}

StreamRecord ParseStreamRecord(std::string_view line) {
  using Kind = StreamRecord::Kind;
  json document;
  try {
    document = ParseJson(line);
  } catch (const std::exception&) {
    return {};
  }

  StreamRecord record;
  const json& type = MemberOf(document, "type");
  if (!type.is_string()) {
    record.kind = Kind::kMistyped;
  } else if (type == "stdout") {
    const json& message = MemberOf(document, "message");
    record.kind = message.is_string() ? Kind::kOutput : Kind::kMistyped;
    if (message.is_string()) record.message = message.get<std::string>();
  } else if (type == "exit") {
    const json& code = MemberOf(document, "code");
    record.kind = code.is_number_integer() ? Kind::kExit : Kind::kMistyped;
    if (code.is_number_integer()) record.code = code.get<int64_t>();
    record.reboot_required = ReplyFlag(document, "rebootRequired", false);
  }
  return record;
}
