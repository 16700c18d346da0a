#pragma once

#include <windows.h>

#include <cstdint>

// Returns a system time or duration in units of 100 ns.
inline uint64_t Ticks(const FILETIME& time) {
  return uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}
