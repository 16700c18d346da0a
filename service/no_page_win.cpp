#include "base/page.h"

// The service has no window: what it shares with the program finds nobody to tell.

void PostJsonToJs(std::string_view) {}

void SendConsoleLog(std::string_view, std::string_view) {}
