#include "net/pnp_devices_win.h"

#include "base/page.h"
#include "exec/command_runner_win.h"
#include "net/pnp_devices.h"

namespace {

constexpr wchar_t kQuery[] =
    L"powershell -NoProfile -ExecutionPolicy Bypass -Command \""
    L"[Console]::OutputEncoding = [System.Text.Encoding]::UTF8; $OutputEncoding = [System.Text.Encoding]::UTF8; "
    L"Get-CimInstance Win32_PnPSignedDriver | Where-Object { $_.DeviceName } | "
    L"Select-Object @{N='FriendlyName';E={$_.DeviceName}}, @{N='Class';E={$_.DeviceClass}}, @{N='Status';E={'OK'}} | "
    L"ConvertTo-Json -Compress\"";

}  // namespace

void getPnpDevices(int request_id) {
  PostJsonToJs(BuildPnpDevices(request_id, ExecuteCmd(kQuery).output));
}
