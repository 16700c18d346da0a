#pragma once

#include <string>
#include <string_view>

// The page's message, one compact JSON document, from what the device query printed (any code page, also
// nothing): the devices with a name, in its order, as {FriendlyName, Class, Status}. One bare object is one
// device. What is not JSON gives a failed reply without devices.
//   [{"FriendlyName":"Zvuková karta Peat®","Class":"MEDIA","Status":"OK"},{"FriendlyName":"Peat
//   Filter","Class":null,"Status":"OK"}]
std::string BuildPnpDevices(int request_id, std::string_view output);
