#pragma once

#include <string_view>

// True when every byte is an ASCII letter or digit or one of space ( ) - . : _ , so that the text can stand
// between double quotes in a command line without any of it being read as syntax. Empty text is safe; any
// byte of 128 and above is not.
bool IsSafeCommandArgument(std::string_view text);
