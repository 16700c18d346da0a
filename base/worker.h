#pragma once

#include <functional>

// Runs `body` on a new detached thread. The body owns copies of all that it needs; nothing waits for it. An
// exception that leaves the body is written to the debugger output and ends there, not the program. Throws
// std::system_error when the system gives no thread.
void StartWorker(std::function<void()> body);
