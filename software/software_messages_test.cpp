#include "software/software_messages.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"

namespace {

const std::vector<SoftwareUpdateEntry> kUpdates = {
    {"Tarn Sync", "Brook.TarnSync", "1.0.2", "1.2.0", "winget"},
    {"Podzim Poznámky", "9QX2B4LMN0PR", "3.1", "3.2", "msstore"}};

DriverCheck OneDriver() {
  return ParseDriverCheck(
      R"({"scannedDriversCount":143,"updates":[{"Title":"Peat® - System - 10.1.5.3","Description":)"
      R"("Peat System driver update","Categories":"Drivers","KBArticles":"None","CurrentVersion":"10.1.4.0",)"
      R"("AvailableVersion":"10.1.5.3","ReleaseDate":"2024-07-01","Severity":"","HardwareId":)"
      R"("PCI\\VEN_8086&DEV_9D3A","IsSkipped":false}]})");
}

}  // namespace

TEST(SoftwareMessages, AreAsRecorded) {
  const struct {
    const char* recorded;
    std::string message;
  } cases[] = {
      {"software_updates", SoftwareUpdatesReply(21, kUpdates)},
      {"apps",
       InstalledAppsReply(22, {{"Tarn Sync", "Brook.TarnSync", "1.2.0", "winget"},
                               {"Peat Audio Console", "ARP\\Machine\\X64\\{0F3C}", "6.0.1", "local"}})},
      {"driver_updates", DriverUpdatesReply(23, OneDriver())},
      {"driver_updates.failed",
       DriverUpdatesFailedReply(23, "Windows Update could not be searched: 0x80072EE2")},
      {"scan_progress.scanning_apps", ScanningAppsMessage(24)},
      {"scan_progress.scanning_drivers", ScanningDriversMessage(24, 2)},
      {"scan_progress.heartbeat", ScanHeartbeatMessage(24, 1)},
      {"scan_progress.done", ScanDoneMessage(24, kUpdates, OneDriver())},
      {"scan_progress.failed", ScanFailedMessage(24)},
  };
  for (const auto& c : cases) EXPECT_EQ(c.message, RecordedMessage(c.recorded)) << c.recorded;
}
