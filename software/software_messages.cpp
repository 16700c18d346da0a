#include "software/software_messages.h"

#include "base/reply.h"

namespace {

using nlohmann::json;

json ToJson(const std::vector<SoftwareUpdateEntry>& updates) {
  json list = json::array();
  for (const SoftwareUpdateEntry& entry : updates) {
    list.push_back({{"name", entry.name},
                    {"id", entry.id},
                    {"version", entry.version},
                    {"available", entry.available},
                    {"source", entry.source}});
  }
  return list;
}

json ScanProgress(int request_id, const char* status, bool success) {
  json message = MakeReply("scan_progress", success, request_id);
  message["status"] = status;
  return message;
}

json DriverUpdates(int request_id, const DriverCheck& check, bool success) {
  json reply = MakeReply("driver_updates", success, request_id);
  reply["updates"] = check.updates;
  reply["count"] = check.updates.size();
  reply["scannedDriversCount"] = check.scanned_drivers_count;
  return reply;
}

}  // namespace

std::string SoftwareUpdatesReply(int request_id, const std::vector<SoftwareUpdateEntry>& updates) {
  json reply = MakeReply("software_updates", true, request_id);
  reply["updates"] = ToJson(updates);
  reply["count"] = updates.size();
  return reply.dump();
}

std::string InstalledAppsReply(int request_id, const std::vector<InstalledAppEntry>& apps) {
  json reply = MakeReply("apps", true, request_id);
  json& list = reply["apps"] = json::array();
  for (const InstalledAppEntry& entry : apps) {
    list.push_back(
        {{"name", entry.name}, {"id", entry.id}, {"version", entry.version}, {"source", entry.source}});
  }
  return reply.dump();
}

std::string DriverUpdatesReply(int request_id, const DriverCheck& check) {
  return DriverUpdates(request_id, check, true).dump();
}

std::string DriverUpdatesFailedReply(int request_id, std::string_view reason) {
  json reply = DriverUpdates(request_id, {}, false);
  reply["error"] = reason;
  return reply.dump();
}

std::string ScanningAppsMessage(int request_id) {
  return ScanProgress(request_id, "scanning_apps", true).dump();
}

std::string ScanningDriversMessage(int request_id, size_t software_count) {
  json message = ScanProgress(request_id, "scanning_drivers", true);
  message["softwareCount"] = software_count;
  return message.dump();
}

std::string ScanHeartbeatMessage(int request_id, int ticks) {
  return json{{"type", "scan_progress"},
              {"status", "scanning_drivers_heartbeat"},
              {"requestId", request_id},
              {"ticks", ticks}}
      .dump();
}

std::string ScanDoneMessage(int request_id, const std::vector<SoftwareUpdateEntry>& software,
                            const DriverCheck& drivers) {
  json message = ScanProgress(request_id, "done", true);
  message["software"] = ToJson(software);
  message["drivers"] = drivers.updates;
  message["scannedDriversCount"] = drivers.scanned_drivers_count;
  return message.dump();
}

std::string ScanFailedMessage(int request_id) {
  return ScanProgress(request_id, "done", false).dump();
}
