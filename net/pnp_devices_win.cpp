#include "net/pnp_devices.h"

#include <exception>
#include <utility>

#include "base/page.h"
#include "exec/command_runner.h"

namespace {

constexpr wchar_t kQuery[] =
    L"powershell -NoProfile -ExecutionPolicy Bypass -Command \""
    L"[Console]::OutputEncoding = [System.Text.Encoding]::UTF8; $OutputEncoding = [System.Text.Encoding]::UTF8; "
    L"Get-CimInstance Win32_PnPSignedDriver | Where-Object { $_.DeviceName } | "
    L"Select-Object @{N='FriendlyName';E={$_.DeviceName}}, @{N='Class';E={$_.DeviceClass}}, @{N='Status';E={'OK'}} | "
    L"ConvertTo-Json -Compress\"";

}  // namespace

void getPnpDevices(int request_id) {
  nlohmann::json devices = nlohmann::json::array();
  bool success = true;
  try {
    devices = ParsePnpDevices(ExecuteCmd(kQuery).output);
  } catch (const std::exception&) {
    success = false;
  }
  PostReply("getPnpDevices", request_id, success, {{"devices", std::move(devices)}});
}
