#pragma once

#include <string>

#include "app/webview2.h"

// Starts a browser environment; `handler` gets it later through the message loop of the calling (UI) thread.
// Asks WebView2Loader.dll in the executable's own folder, else the client library of the installed runtime. A
// failure code when there is neither; `handler` is not called then.
HRESULT CreateBrowserEnvironment(const std::wstring& user_data_folder,
                                 ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler);
