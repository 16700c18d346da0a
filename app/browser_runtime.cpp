#include "app/browser_runtime.h"

#include <array>
#include <cstdint>
#include <optional>

namespace {

using Version = std::array<uint32_t, 4>;

std::optional<Version> ParseVersion(std::wstring_view text) {
  Version version{};
  for (size_t i = 0; i < version.size(); ++i) {
    if (i > 0) {
      if (!text.starts_with(L'.')) return {};
      text.remove_prefix(1);
    }
    size_t digits = 0;
    for (; digits < text.size() && text[digits] >= L'0' && text[digits] <= L'9'; ++digits) {
      if (digits == 9) return {};  // no real version has such a number; one more digit could overflow
      version[i] = version[i] * 10 + static_cast<uint32_t>(text[digits] - L'0');
    }
    if (digits == 0) return {};
    text.remove_prefix(digits);
  }
  return text.empty() ? std::optional(version) : std::nullopt;
}

}  // namespace

std::wstring ClientLibraryPath(std::wstring_view runtime_folder) {
  const bool is_absolute = (runtime_folder.size() > 3 && runtime_folder.substr(1, 2) == L":\\") ||
                           runtime_folder.starts_with(L"\\\\");
  if (!is_absolute) return {};
  while (runtime_folder.ends_with(L'\\')) runtime_folder.remove_suffix(1);
  const auto version = ParseVersion(runtime_folder.substr(runtime_folder.rfind(L'\\') + 1));
  if (!version || *version < *ParseVersion(kOldestBrowserVersion)) return {};
  return std::wstring(runtime_folder) + L"\\EBWebView\\x64\\EmbeddedBrowserWebView.dll";
}
