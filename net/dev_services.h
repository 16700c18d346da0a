#pragma once

#include <string>

// Worker bodies that list the local development services reported by the helper service and pass
// commands on to it. Texts are UTF-8. Only the service and the page interpret them.
void getDevServices(int request_id);
void controlDevService(int request_id, const std::string& service_type, const std::string& command);
