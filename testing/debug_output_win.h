#pragma once

#include <windows.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

// Collects what the process writes with OutputDebugStringW while an object lives: without a debugger the
// system raises the text as an exception that handlers may take. One object at a time.
class DebugOutput {
 public:
  DebugOutput() : handler_(AddVectoredExceptionHandler(1, Take)) { TakeLines(); }
  ~DebugOutput() { RemoveVectoredExceptionHandler(handler_); }
  DebugOutput(const DebugOutput&) = delete;
  DebugOutput& operator=(const DebugOutput&) = delete;

  // The texts since the last call, from any thread.
  static std::vector<std::wstring> TakeLines() {
    const std::lock_guard lock(Mutex());
    return std::exchange(Lines(), {});
  }

 private:
  // Both carry the length with NUL and the address. A system that has only the second converts to the ANSI
  // code page before.
  static constexpr DWORD kWideTextRaised = 0x4001000A;  // DBG_PRINTEXCEPTION_WIDE_C
  static constexpr DWORD kTextRaised = 0x40010006;      // DBG_PRINTEXCEPTION_C

  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::vector<std::wstring>& Lines() {
    static std::vector<std::wstring> lines;
    return lines;
  }
  static LONG CALLBACK Take(EXCEPTION_POINTERS* raised) {
    const EXCEPTION_RECORD& record = *raised->ExceptionRecord;
    if (record.ExceptionCode != kWideTextRaised && record.ExceptionCode != kTextRaised)
      return EXCEPTION_CONTINUE_SEARCH;
    const void* address = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
    const std::lock_guard lock(Mutex());
    if (record.ExceptionCode == kWideTextRaised) {
      Lines().emplace_back(static_cast<const wchar_t*>(address));
    } else {
      wchar_t text[1024] = {};
      MultiByteToWideChar(CP_ACP, 0, static_cast<const char*>(address), -1, text, 1023);
      Lines().emplace_back(text);
    }
    return EXCEPTION_CONTINUE_EXECUTION;
  }

  void* handler_;
};
