#include "net/pnp_devices.h"

#include <string>

#include "base/json_text.h"
#include "base/text.h"

namespace {

using nlohmann::json;

// Returns a member as text, or `fallback` if it is missing or null.
std::string MemberText(const json& element, const char* name, const char* fallback) {
  if (!element.is_object() || !element.contains(name) || element[name].is_null()) return fallback;
  return element[name].is_string() ? element[name].get<std::string>() : element[name].dump();
}

bool HasName(const json& element) {
  return element.is_object() && element.contains("FriendlyName") && !element["FriendlyName"].is_null();
}

}  // namespace

json ParsePnpDevices(std::string_view output) {
  json devices = json::array();
  if (output.empty()) return devices;
  const json document = ParseJson(ConsoleTextToUtf8(output));
  for (const json& element : document.is_array() ? document : json::array({document}))
    if (HasName(element))
      devices.push_back({{"FriendlyName", MemberText(element, "FriendlyName", "")},
                         {"Class", MemberText(element, "Class", "System")},
                         {"Status", MemberText(element, "Status", "Unknown")}});
  return devices;
}
