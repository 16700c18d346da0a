// Stand-in for the console tools that the program starts. Copied under the name of a tool (winget.exe), it
// does what the script winget.json in the folder VARNEL_TOOL_SCRIPTS says and appends its exact command line
// to winget.log there. testing/README.md describes the script.
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>

#include "base/handle_win.h"
#include "base/text.h"

namespace {

using nlohmann::json;

std::filesystem::path OwnName() {
  wchar_t path[MAX_PATH];
  return std::filesystem::path(std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH))).stem();
}

// One append is one write, so that tools that run at the same time do not mix their lines.
void Log(const std::filesystem::path& file, const std::string& line) {
  const Owned<FileHandleKind> log(CreateFileW(
      file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr));
  const std::string text = line + "\n";
  DWORD written = 0;
  WriteFile(log.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

std::string Bytes(const json& step) {
  std::string bytes = step.value("text", "");
  const std::string hex = step.value("hex", "");
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  std::string repeated;
  for (int i = step.value("repeat", 1); i > 0; --i) repeated += bytes;
  return repeated;
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

// Starts this tool once more with the output handles, where it only waits: the pipe's writing end stays open
// as long.
void StartGrandchild(int milliseconds) {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring line = L"\"" + std::wstring(path) + L"\" --keep-output-open " + std::to_wstring(milliseconds);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
    return;
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

// Opens a file without sharing and keeps it so until this process ends.
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
  Write(to_error ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE, Bytes(step));
  if (step.contains("grandchild_ms")) StartGrandchild(step["grandchild_ms"]);
  if (step.value("close_output", false)) {
    CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
    CloseHandle(GetStdHandle(STD_ERROR_HANDLE));
  }
}

// The script itself, or the first of its "cases" whose "when" occurs in the command line.
json ForCommandLine(const json& script, const std::string& line) {
  for (const json& one : script.value("cases", json::array())) {
    if (line.find(one["when"].get<std::string>()) != std::string::npos) return one;
  }
  return script;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc == 3 && std::wstring(argv[1]) == L"--keep-output-open") {
    Sleep(static_cast<DWORD>(std::stoi(argv[2])));
    return 0;
  }
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
