#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

// Posts the listening TCP sockets, or none if netstat cannot be started. Worker body.
void getOpenPorts(int request_id);

// Returns the listening TCP sockets in the output of "netstat -ano" (any code page), in its order, as an
// array of objects of texts. A line counts if it has at least five columns and contains the word
// LISTENING, which some translated systems do not print.
//   TCP    127.0.0.1:5354         0.0.0.0:0              LISTENING       1016
//     -> {"local":"127.0.0.1:5354","pid":"1016","port":"5354","proto":"TCP","state":"LISTENING"}
nlohmann::json ParseListeningPorts(std::string_view output);
