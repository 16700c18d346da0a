#include "maint/quick_actions.h"

#include "base/lower_case.h"

std::string FileCheckResultText(int64_t code) {
  if (code == 0) return "[Success] Sken integrity systému byl úspěšně dokončen bez nalezení chyb.";
  return "Test integrity systému dokončen s návratovým kódem " + std::to_string(code) + ".";
}

bool IsExplorer(std::wstring_view executable_name) {
  return LowerCase(std::wstring(executable_name)) == L"explorer.exe";
}

bool IsIconCacheFile(std::wstring_view file_name) {
  return file_name.starts_with(L"iconcache_") || file_name.starts_with(L"thumbcache_");
}
