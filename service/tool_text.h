#pragma once

#include <string>
#include <string_view>

// Turns the output of sfc.exe into UTF-8: it writes UTF-16 (little endian) without a mark when it is redirected.
// Output whose second byte is not zero is passed on as it is.
class ToolText {
 public:
  // The characters that `bytes` completes.
  std::string Add(std::string_view bytes);

 private:
  enum class Form { kUnknown, kBytes, kUtf16 } form_ = Form::kUnknown;
  std::string pending_;  // less than a character
};
