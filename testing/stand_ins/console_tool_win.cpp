// Stand-in for the console tools that the program starts. Copied under the name of a tool (winget.exe),
// it follows the script winget.json in the folder VARNEL_TOOL_SCRIPTS and appends its exact command line
// to winget.log there. testing/README.md describes the script.
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>

#include "base/handle_win.h"
#include "base/text.h"
#include "testing/stand_ins/script_bytes.h"

namespace {

using nlohmann::json;

std::filesystem::path OwnName() {
  wchar_t path[MAX_PATH];
  return std::filesystem::path(std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH))).stem();
}

// Appends in a single write, so that concurrent tools do not mix their lines.
void Log(const std::filesystem::path& file, const std::string& line) {
  const Owned<FileHandleKind> log(CreateFileW(
      file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr));
  const std::string text = line + "\n";
  DWORD written = 0;
  WriteFile(log.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void Write(DWORD which, const std::string& bytes) {
  DWORD written = 0;
  for (size_t done = 0; done < bytes.size(); done += written) {
    if (!WriteFile(GetStdHandle(which), bytes.data() + done, static_cast<DWORD>(bytes.size() - done),
                   &written, nullptr)) {
      return;
    }
  }
}

// Opens a file without sharing and keeps it open until this process ends.
void Hold(const std::string& path) {
  static Owned<FileHandleKind> held;
  held = Owned<FileHandleKind>(
      CreateFileW(Utf8ToWide(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!held) std::exit(252);
}

void Perform(const json& step) {
  if (step.contains("hold")) Hold(step["hold"]);
  Sleep(static_cast<DWORD>(step.value("delay_ms", 0)));
  const bool to_error = step.value("stderr", false);
  Write(to_error ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE, ScriptBytes(step));
  if (step.value("close_output", false)) {
    CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
    CloseHandle(GetStdHandle(STD_ERROR_HANDLE));
  }
}

// Returns the first of the script's "cases" whose "when" occurs in the command line, otherwise the
// script itself.
json ForCommandLine(const json& script, const std::string& line) {
  for (const json& one : script.value("cases", json::array())) {
    if (line.find(one["when"].get<std::string>()) != std::string::npos) return one;
  }
  return script;
}

}  // namespace

int wmain() {
  const wchar_t* folder = _wgetenv(L"VARNEL_TOOL_SCRIPTS");
  if (!folder) return 250;
  const std::filesystem::path base = std::filesystem::path(folder) / OwnName();
  const std::string line = WideToUtf8(GetCommandLineW());
  const auto log = std::filesystem::path(base).concat(L".log");
  Log(log, line);
  std::ifstream file(std::filesystem::path(base).concat(L".json"), std::ios::binary);
  const json script = ForCommandLine(json::parse(file, nullptr, false), line);
  if (script.is_discarded()) return 251;
  if (script.value("log_folder", false)) Log(log, std::filesystem::current_path().string());
  for (const json& step : script.value("steps", json::array())) Perform(step);
  return static_cast<int>(script.value("exit", 0u));
}
