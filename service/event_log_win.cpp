#include "service/event_log_win.h"

#include <cstdio>

#include "base/text.h"

namespace {

bool is_console = false;

}  // namespace

void WriteEventsToConsole() {
  is_console = true;
}

void WriteEvent(WORD type, const std::wstring& text) {
  if (is_console) {
    std::printf("%s\n", WideToUtf8(text).c_str());
    std::fflush(stdout);
    return;
  }
  const HANDLE source = RegisterEventSourceW(nullptr, L"VarnelService");
  if (source == nullptr) return;
  // The source's message file, EventCreate.exe, has "%1" as the text of each event from 1 to 1000.
  const wchar_t* texts[] = {text.c_str()};
  ReportEventW(source, type, 0, 1, nullptr, 1, 0, texts, nullptr);
  DeregisterEventSource(source);
}
