#pragma once

#include <string>

#include "app/webview2.h"

// Starts creating a browser environment. `handler` receives it later, through the message loop of the
// calling (UI) thread. Uses WebView2Loader.dll in the executable's own folder, otherwise the client
// library of the installed runtime. If there is neither, returns a failure code and does not call
// `handler`.
HRESULT CreateBrowserEnvironment(const std::wstring& user_data_folder,
                                 ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler);
