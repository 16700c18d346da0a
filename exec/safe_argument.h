#pragma once

#include <string_view>

// Returns true if every byte is an ASCII letter or digit or one of space ( ) - . : _ , so that the text
// can be put between double quotes in a command line and none of it is read as syntax. Empty text is
// safe; any byte of 128 and above is not.
bool IsSafeCommandArgument(std::string_view text);
