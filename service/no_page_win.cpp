#include "base/page.h"

// Replaces the page's functions with empty ones, because the service has no window.

void PostJsonToJs(std::string_view) {}

void SendConsoleLog(std::string_view, std::string_view) {}
