#pragma once

#include <wrl/client.h>

#include "app/webview2.h"

// Starts the browser control in the main window; everything after that happens in callbacks on this (UI)
// thread. Without a browser runtime the window stays empty. The browser's profile lies in the local
// application data, else beside the executable.
void StartBrowser();

// The callback that everything starts from: it takes the environment, makes the control, configures it,
// connects its events and navigates to the page.
Microsoft::WRL::ComPtr<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler> MakeEnvironmentHandler();
