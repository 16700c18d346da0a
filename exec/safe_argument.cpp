#include "exec/safe_argument.h"

bool IsSafeCommandArgument(std::string_view text) {
  constexpr std::string_view kSafe = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 ()-.:_";
  return text.find_first_not_of(kSafe) == text.npos;
}
