#pragma once

#include <windows.h>

#include <string>

// Writes one entry to the system's event log (source VarnelService), or in the foreground a line to
// standard output. `type` is EVENTLOG_INFORMATION_TYPE, EVENTLOG_WARNING_TYPE or EVENTLOG_ERROR_TYPE.
// Any thread.
void WriteEvent(WORD type, const std::wstring& text);

// Redirects later entries to standard output.
void WriteEventsToConsole();
