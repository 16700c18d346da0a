#pragma once

// What a start with "--silent-clean" does instead of showing a window: cleans all seven junk categories and
// returns when done. On the main thread, without window, page or browser.
void RunSilentClean();
