#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

// Sends messages to the page from any thread. app/bridge_win.cpp implements PostJsonToJs and
// SendConsoleLog for the program. Tests link testing/recording_page.cpp instead and need no window.

// Posts one complete JSON document (UTF-8) to the page. A document that cannot be delivered is dropped.
void PostJsonToJs(std::string_view json);

// Posts the reply to an action: {"requestId":...,"success":...,"type":...} plus the members of the
// object `members`, whose texts must be UTF-8. Move large values into it.
void PostReply(std::string_view type, int request_id, bool success,
               nlohmann::json members = nlohmann::json::object());

// Adds one line to the page's terminal pane and to the debugger output. Both texts are UTF-8; `style` is a
// CSS class of the terminal, "system-line" if empty.
void SendConsoleLog(std::string_view message, std::string_view style);
