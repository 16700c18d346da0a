#include "base/trace.h"

#include <windows.h>

void Trace(const std::wstring& text) {
  OutputDebugStringW((L"[Varnel Debug] " + text + L"\n").c_str());
}
