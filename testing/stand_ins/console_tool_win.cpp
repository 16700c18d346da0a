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

namespace {

using nlohmann::json;

void Write(HANDLE file, const std::string& bytes) {
  DWORD written = 0;
  WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

// Appends in a single write, so that concurrent tools do not mix their lines.
void Log(const std::wstring& path, const std::string& line) {
  const FileHandle log(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   nullptr, OPEN_ALWAYS, 0, nullptr));
  Write(log.get(), line + "\n");
}

std::string Bytes(const json& step) {
  std::string bytes = step.value("text", "");
  const std::string hex = step.value("hex", "");
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return bytes;
}

void Perform(const json& step) {
  static FileHandle held;  // unshared, until this process ends
  if (step.contains("hold")) {
    const std::wstring path = Utf8ToWide(step["hold"].get<std::string>());
    held.reset(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!held) std::exit(252);
  }
  Sleep(step.value("delay_ms", 0u));
  const HANDLE outputs[] = {GetStdHandle(STD_OUTPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)};
  Write(outputs[step.value("stderr", false) ? 1 : 0], Bytes(step));
  if (!step.value("close_output", false)) return;
  for (const HANDLE output : outputs) CloseHandle(output);
}

}  // namespace

int wmain(int, wchar_t** arguments) {
  const std::wstring folder = _wgetenv(L"VARNEL_TOOL_SCRIPTS");
  const std::wstring base = folder + L"\\" + std::filesystem::path(arguments[0]).stem().wstring();
  const std::string line = WideToUtf8(GetCommandLineW());
  Log(base + L".log", line);
  std::ifstream file(std::filesystem::path(base + L".json"));
  json script = json::parse(file);
  for (const json& one : script.value("cases", json::array())) {
    if (line.find(one["when"].get<std::string>()) == std::string::npos) continue;
    script = one;
    break;
  }
  if (script.value("log_folder", false)) Log(base + L".log", std::filesystem::current_path().string());
  for (const json& step : script.value("steps", json::array())) Perform(step);
  return static_cast<int>(script.value("exit", 0u));
}
