#include "software/system_scan.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/page.h"
#include "base/text.h"
#include "exec/command_runner.h"
#include "software/driver_check.h"
#include "software/driver_scripts.h"
#include "software/package_lists.h"
#include "software/winget_table.h"

namespace {

constexpr std::chrono::nanoseconds kHeartbeatInterval{4'000'000'000};

constexpr const char* kSystemLine = "system-line";
constexpr const char* kErrorLine = "stderr-line";
constexpr const char* kSuccessLine = "success-line";

// Posts a stage of the scan.
void PostProgress(int request_id, const char* status, bool success,
                  nlohmann::json more = nlohmann::json::object()) {
  more["status"] = status;
  PostReply("scan_progress", request_id, success, std::move(more));
}

// Tells the page every four seconds that the scan is alive, from construction to destruction. The
// destructor waits for the current interval to end.
class Heartbeat {
 public:
  explicit Heartbeat(int request_id) : thread_(&Heartbeat::Beat, this, request_id) {}
  ~Heartbeat() {
    stop_.exchange(true);
    thread_.join();
  }

 private:
  void Beat(int request_id) try {
    for (int ticks = 1; !stop_; ++ticks) {
      std::this_thread::sleep_until(std::chrono::steady_clock::now() + kHeartbeatInterval);
      if (stop_) return;
      const nlohmann::json beat = {{"type", "scan_progress"},
                                   {"status", "scanning_drivers_heartbeat"},
                                   {"requestId", request_id},
                                   {"ticks", ticks}};
      PostJsonToJs(beat.dump());
    }
  } catch (...) {
    // Out of memory: the scan itself reports it.
  }

  std::atomic<bool> stop_ = false;
  std::thread thread_;  // last, because it reads the flag
};

std::vector<SoftwareUpdateEntry> ScanSoftware() {
  const CmdResult result = ExecuteCmd(kWingetUpgradeCommand);
  if (!result.started) {
    SendConsoleLog("[Error] Failed to execute winget. Win32 Error: " + std::to_string(result.error),
                   kErrorLine);
  } else if (result.exit_code != 0) {
    SendConsoleLog("Winget process returned non-zero code: " + std::to_string(result.exit_code), kErrorLine);
  }
  return ParseSoftwareUpdates(result.output);
}

// Throws if the script printed anything but JSON.
DriverCheck ScanDrivers(int request_id) {
  CmdResult result;
  {
    const Heartbeat heartbeat(request_id);
    result = ExecuteCmd(ScriptCommand(kCheckDriversScript));
  }
  if (!result.started) {
    SendConsoleLog(
        "[Error] Failed to execute PowerShell driver check. Win32 Error: " + std::to_string(result.error),
        kErrorLine);
    return {};
  }
  if (result.exit_code != 0) {
    SendConsoleLog("PowerShell check returned exit code: " + std::to_string(result.exit_code), kErrorLine);
  }
  try {
    return ParseDriverCheck(result.output);
  } catch (const std::exception&) {
    // The exception quotes only the first character.
    const std::string reason = DriverCheckFailure(result.output);
    if (!reason.empty()) SendConsoleLog(reason, kErrorLine);
    throw;
  }
}

void Scan(int request_id) {
  SendConsoleLog("Thread started: System Scan initiated.", kSystemLine);
  PostProgress(request_id, "scanning_apps", true);
  SendConsoleLog("Scanning software updates via winget...", kSystemLine);
  const std::vector<SoftwareUpdateEntry> software = ScanSoftware();
  SendConsoleLog("Software scan finished. Found " + std::to_string(software.size()) + " packages.",
                 kSuccessLine);
  PostProgress(request_id, "scanning_drivers", true, {{"softwareCount", software.size()}});
  SendConsoleLog("Querying driver updates via Windows Update COM Agent...", kSystemLine);
  const DriverCheck drivers = ScanDrivers(request_id);
  SendConsoleLog("Driver scan finished. Found " + std::to_string(drivers.updates.size()) + " updates.",
                 kSuccessLine);
  SendConsoleLog("Scan completed successfully, dispatching JSON to JS.", kSuccessLine);
  PostProgress(request_id, "done", true,
               {{"software", ToJson(software)},
                {"drivers", drivers.updates},
                {"scannedDriversCount", drivers.scanned_drivers_count}});
}

}  // namespace

void startSystemScan(int request_id) {
  try {
    Scan(request_id);
    return;
  } catch (const std::exception& error) {
    // A parse error quotes the script's text, possibly cut inside a character.
    SendConsoleLog("[Fatal Error] Exception in scan thread: " + ConsoleTextToUtf8(error.what()), kErrorLine);
  } catch (...) {
    SendConsoleLog("[Fatal Error] Unknown exception in scan thread.", kErrorLine);
  }
  PostProgress(request_id, "done", false);
}

void getDriverUpdates(int request_id) {
  const CmdResult result = ExecuteCmd(ScriptCommand(kCheckDriversScript));
  nlohmann::json members;
  bool success = true;
  try {
    members = ToJson(result.started ? ParseDriverCheck(result.output) : DriverCheck());
  } catch (const std::exception&) {
    success = false;
    members = ToJson(DriverCheck());
    members["error"] = DriverCheckFailure(result.output);
  }
  PostReply("driver_updates", request_id, success, std::move(members));
}
