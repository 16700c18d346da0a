#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

// Asks PowerShell for the devices with a signed driver and posts them. Takes many seconds. Posts none if
// PowerShell cannot be started or prints nothing. Worker body.
void getPnpDevices(int request_id);

// Returns the devices with a name from the query's output (any code page, possibly empty), in its order,
// as {FriendlyName, Class, Status}. A single bare object is one device. Throws std::exception for text
// that is not JSON.
//   [{"FriendlyName":"Zvuková karta Peat®","Class":"MEDIA","Status":"OK"},
//    {"FriendlyName":"Peat Filter","Class":null,"Status":"OK"}]
nlohmann::json ParsePnpDevices(std::string_view output);
