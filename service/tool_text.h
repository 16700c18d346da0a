#pragma once

#include <string>
#include <string_view>

// Converts the output of sfc.exe to UTF-8. If redirected, it writes UTF-16 (little endian) without a
// byte order mark. Output whose second byte is not zero is passed on unchanged.
class ToolText {
 public:
  // Returns the characters that `bytes` completes.
  std::string Add(std::string_view bytes);

 private:
  enum class Form { kUnknown, kBytes, kUtf16 } form_ = Form::kUnknown;
  std::string pending_;  // less than one character
};
