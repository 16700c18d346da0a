// Stand-in for the browser's loader that ends the program as soon as it is called.
#include <windows.h>

#include "testing/bench/peak_memory_win.h"

extern "C" __declspec(dllexport) HRESULT STDMETHODCALLTYPE
    CreateCoreWebView2EnvironmentWithOptions(PCWSTR, PCWSTR, void*, void*) {
  ExitProcess(PeakMemoryKb());
}
