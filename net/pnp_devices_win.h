#pragma once

// Worker body: asks PowerShell for the devices with a signed driver and posts them; takes many seconds. No
// devices when PowerShell cannot be started or prints nothing.
void getPnpDevices(int request_id);
