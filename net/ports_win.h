#pragma once

#include <nlohmann/json.hpp>

// ParseListeningPorts of what a hidden "netstat -ano" printed; an empty array when it could not be started.
// Blocks until it ends.
nlohmann::json GetListeningPorts();

// Worker body: posts the listening ports.
void getOpenPorts(int request_id);
