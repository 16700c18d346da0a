#pragma once

#include <string_view>

// Returns true if the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing above
// U+10FFFF.
bool IsValidUtf8(std::string_view bytes);
