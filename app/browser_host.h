#pragma once

// Starts the browser control in the main window; everything after that happens in callbacks on this (UI)
// thread. Without a browser runtime the window stays empty. The browser's profile lies in the local
// application data, else beside the executable.
void StartBrowser();
