#pragma once

#include <string>

// Writes "[Varnel Debug] ", the text and a line feed to the debugger output (OutputDebugStringW).
void Trace(const std::wstring& text);
