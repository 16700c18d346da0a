#pragma once

// Windows counts in powers of two and calls them MB and GB; so does Varnel.
inline constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;
inline constexpr double kBytesPerGigabyte = 1024.0 * kBytesPerMegabyte;
