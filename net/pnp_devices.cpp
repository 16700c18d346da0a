#include "net/pnp_devices.h"

#include <exception>

#include "base/json_text.h"
#include "base/reply.h"
#include "base/text.h"

namespace {

using nlohmann::json;

// A member as text; `fallback` when it is missing or null.
std::string MemberText(const json& element, const char* name, const char* fallback) {
  if (!element.is_object() || !element.contains(name) || element[name].is_null()) return fallback;
  return element[name].is_string() ? element[name].get<std::string>() : element[name].dump();
}

bool HasName(const json& element) {
  return element.is_object() && element.contains("FriendlyName") && !element["FriendlyName"].is_null();
}

json DevicesOf(const json& document) {
  json devices = json::array();
  for (const json& element : document.is_array() ? document : json::array({document}))
    if (HasName(element))
      devices.push_back({{"FriendlyName", MemberText(element, "FriendlyName", "")},
                         {"Class", MemberText(element, "Class", "System")},
                         {"Status", MemberText(element, "Status", "Unknown")}});
  return devices;
}

}  // namespace

std::string BuildPnpDevices(int request_id, std::string_view output) {
  json reply = MakeReply("getPnpDevices", true, request_id);
  reply["devices"] = json::array();
  if (output.empty()) return reply.dump();
  try {
    reply["devices"] = DevicesOf(ParseJson(ConsoleTextToUtf8(output)));
  } catch (const std::exception&) {
    reply["success"] = false;
  }
  return reply.dump();
}
