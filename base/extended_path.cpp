#include "base/extended_path.h"

std::wstring ExtendedPath(std::wstring_view absolute_path) {
  for (const std::wstring_view prefix : {LR"(\\?\)", LR"(\\.\)"})
    if (absolute_path.starts_with(prefix)) return std::wstring(absolute_path);
  if (absolute_path.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + std::wstring(absolute_path.substr(2));
  return LR"(\\?\)" + std::wstring(absolute_path);
}
