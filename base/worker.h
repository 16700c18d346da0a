#pragma once

#include <functional>

// Runs `body` on a new detached thread. The body must own copies of everything it needs, because nothing
// waits for it. An exception that leaves the body is written to the debugger output and does not end the
// program. Throws std::system_error if the system cannot create a thread.
void StartWorker(std::function<void()> body);
