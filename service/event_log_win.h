#pragma once

#include <windows.h>

#include <string>

// One entry of the system's event log (source VarnelService); in the foreground a line of standard output.
// `type` is EVENTLOG_INFORMATION_TYPE, EVENTLOG_WARNING_TYPE or EVENTLOG_ERROR_TYPE. Any thread.
void WriteEvent(WORD type, const std::wstring& text);

// From now on entries go to standard output.
void WriteEventsToConsole();
