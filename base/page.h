#pragma once

#include <string_view>

// The way back to the page, callable from any thread. app/bridge_win.cpp implements both for the program;
// tests link testing/recording_page.cpp instead and need no window.

// Posts one complete JSON document (UTF-8) to the page. A document that cannot be delivered is dropped.
void PostJsonToJs(std::string_view json);

// Adds one line to the page's terminal pane and to the debugger output. Both texts are UTF-8; `style` is a
// CSS class of the terminal, "system-line" when empty.
void SendConsoleLog(std::string_view message, std::string_view style);
