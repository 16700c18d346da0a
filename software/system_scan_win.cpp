#include "software/system_scan_win.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <string>
#include <thread>

#include "base/page.h"
#include "base/text.h"
#include "exec/command_runner_win.h"
#include "software/driver_check.h"
#include "software/driver_scripts_win.h"
#include "software/package_lists_win.h"
#include "software/software_messages.h"

namespace {

constexpr std::chrono::nanoseconds kHeartbeatInterval{4'000'000'000};

constexpr const char* kSystemLine = "system-line";
constexpr const char* kErrorLine = "stderr-line";
constexpr const char* kSuccessLine = "success-line";

// Tells the page every four seconds that the scan is alive, from construction to destruction, which waits for
// the current interval.
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
      PostJsonToJs(ScanHeartbeatMessage(request_id, ticks));
    }
  } catch (...) {
    // Out of memory: the scan itself reports it.
  }

  std::atomic<bool> stop_ = false;
  std::thread thread_;  // last: it reads the flag
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

// Throws when the script printed something else than JSON.
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
    // The error itself quotes only the first character.
    const std::string reason = DriverCheckFailure(result.output);
    if (!reason.empty()) SendConsoleLog(reason, kErrorLine);
    throw;
  }
}

void Scan(int request_id) {
  SendConsoleLog("Thread started: System Scan initiated.", kSystemLine);
  PostJsonToJs(ScanningAppsMessage(request_id));
  SendConsoleLog("Scanning software updates via winget...", kSystemLine);
  const std::vector<SoftwareUpdateEntry> software = ScanSoftware();
  SendConsoleLog("Software scan finished. Found " + std::to_string(software.size()) + " packages.",
                 kSuccessLine);
  PostJsonToJs(ScanningDriversMessage(request_id, software.size()));
  SendConsoleLog("Querying driver updates via Windows Update COM Agent...", kSystemLine);
  const DriverCheck drivers = ScanDrivers(request_id);
  SendConsoleLog("Driver scan finished. Found " + std::to_string(drivers.updates.size()) + " updates.",
                 kSuccessLine);
  SendConsoleLog("Scan completed successfully, dispatching JSON to JS.", kSuccessLine);
  PostJsonToJs(ScanDoneMessage(request_id, software, drivers));
}

}  // namespace

void startSystemScan(int request_id) {
  try {
    Scan(request_id);
    return;
  } catch (const std::exception& error) {
    // A parse error quotes the script's text, perhaps cut inside a character.
    SendConsoleLog("[Fatal Error] Exception in scan thread: " + ConsoleTextToUtf8(error.what()), kErrorLine);
  } catch (...) {
    SendConsoleLog("[Fatal Error] Unknown exception in scan thread.", kErrorLine);
  }
  PostJsonToJs(ScanFailedMessage(request_id));
}

void getDriverUpdates(int request_id) {
  const CmdResult result = ExecuteCmd(ScriptCommand(kCheckDriversScript));
  std::string reply;
  try {
    reply = DriverUpdatesReply(request_id, result.started ? ParseDriverCheck(result.output) : DriverCheck{});
  } catch (const std::exception&) {
    reply = DriverUpdatesFailedReply(request_id, DriverCheckFailure(result.output));
  }
  PostJsonToJs(reply);
}
