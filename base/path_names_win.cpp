#include "base/path_names.h"

#include <windows.h>

std::wstring LongPath(const std::wstring& path) {
  std::wstring longer(32'768, L'\0');
  longer.resize(GetLongPathNameW(path.c_str(), longer.data(), static_cast<DWORD>(longer.size())));
  return longer.empty() ? path : longer;
}

bool IsSamePath(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}
