#pragma once

#include <string>

// Worker bodies: list the local development services that the helper service reports, and hand one of its
// commands on to it. Texts are UTF-8 and mean something to the service and the page only.
void getDevServices(int request_id);
void controlDevService(int request_id, const std::string& service_type, const std::string& command);
