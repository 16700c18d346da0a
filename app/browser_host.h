#pragma once

// Starts the browser control in the main window. Everything after that happens in callbacks on this (UI)
// thread. Without a browser runtime, the window stays empty. The browser's profile is in the local
// application data folder, otherwise beside the executable.
void StartBrowser();
