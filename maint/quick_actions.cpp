#include "maint/quick_actions.h"

#include <algorithm>
#include <cwctype>

using nlohmann::json;

namespace {

std::string FileCheckMessage(int request_id, const char* stream_type, std::string_view message,
                             json more = json::object()) {
  more.update(
      {{"type", "sfc_stream"}, {"streamType", stream_type}, {"requestId", request_id}, {"message", message}});
  return more.dump();
}

}  // namespace

std::string BuildQuickActionReply(int request_id, bool success, std::string_view message) {
  return json{{"type", "quickAction"}, {"success", success}, {"requestId", request_id}, {"message", message}}
      .dump();
}

std::string BuildRebuildIconsReply(int request_id, bool success) {
  return BuildQuickActionReply(
      request_id, success,
      success ? "Mezipaměť ikon na ploše byla úspěšně obnovena a Windows Explorer byl restartován."
              : "Nepodařilo se obnovit mezipaměť ikon.");
}

std::string BuildSafeModeReply(int request_id, bool success) {
  return BuildQuickActionReply(
      request_id, success,
      success ? "Systém byl úspěšně nakonfigurován pro spuštění do nouzového režimu. Restartuji počítač..."
              : "Nepodařilo se nastavit nouzový režim.");
}

std::string BuildFileCheckStatus(int request_id) {
  return FileCheckMessage(
      request_id, "status",
      "Spouštím test integrity systémových souborů a komponent Windows přes pomocnou službu...");
}

std::string BuildFileCheckLine(int request_id, std::string_view line) {
  return FileCheckMessage(request_id, "stdout", line);
}

std::string BuildFileCheckExit(int request_id, int64_t code, std::string_view message) {
  return FileCheckMessage(request_id, "exit", message, {{"code", code}});
}

std::string FileCheckResultText(int64_t code) {
  if (code == 0) return "[Success] Sken integrity systému byl úspěšně dokončen bez nalezení chyb.";
  return "Test integrity systému dokončen s návratovým kódem " + std::to_string(code) + ".";
}

bool IsExplorer(std::wstring_view executable_name) {
  constexpr std::wstring_view explorer = L"explorer.exe";
  return std::ranges::equal(executable_name, explorer, {}, [](wchar_t c) {
    return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  });
}

bool IsIconCacheFile(std::wstring_view file_name) {
  return file_name.starts_with(L"iconcache_") || file_name.starts_with(L"thumbcache_");
}
