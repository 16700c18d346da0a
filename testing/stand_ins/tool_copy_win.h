#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/exe_directory_win.h"

// A step of a tool's script that writes any bytes.
inline nlohmann::json WriteStep(std::string_view bytes, int delay_ms = 0) {
  std::string hex;
  for (const char c : bytes)
    for (const int digit : {c >> 4 & 15, c & 15}) hex += "0123456789abcdef"[digit];
  return {{"hex", hex}, {"delay_ms", delay_ms}};
}

// The console tool as `name` ("winget") beside the test binary, where the system looks for a bare program
// name first, doing what `script` says (console_tool_win.cpp), until destroyed. A script of null makes a file
// there that cannot be started.
class ToolCopy {
 public:
  ToolCopy(const std::wstring& name, const nlohmann::json& script)
      : tool_(std::filesystem::path(GetExeDirectory()) / (name + L".exe")),
        scripts_(std::filesystem::temp_directory_path() / L"varnel_tool_scripts"),
        log_(scripts_ / (name + L".log")) {
    std::filesystem::create_directories(scripts_);
    std::filesystem::remove(log_);
    std::ofstream(scripts_ / (name + L".json"), std::ios::binary) << script.dump();
    SetEnvironmentVariableW(L"VARNEL_TOOL_SCRIPTS", scripts_.c_str());
    if (script.is_null()) {
      std::ofstream(tool_, std::ios::binary) << "no program";
    } else {
      const auto console_tool = std::filesystem::path(GetExeDirectory()) / L"..\\stand_ins\\console_tool.exe";
      std::filesystem::copy_file(console_tool, tool_, std::filesystem::copy_options::overwrite_existing);
    }
  }
  ~ToolCopy() {
    // The system may hold the file for a moment after the tool has ended.
    for (int i = 0; i < 100 && !DeleteFileW(tool_.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND; ++i)
      Sleep(20);
  }
  ToolCopy(const ToolCopy&) = delete;
  ToolCopy& operator=(const ToolCopy&) = delete;

  // Makes it one that the system takes for a windowed program, so that it gets no console. Wine's console
  // host inherits a tool's output and holds it until the tool has ended.
  void BecomeWindowed() const {
    std::fstream file(tool_, std::ios::in | std::ios::out | std::ios::binary);
    uint32_t header = 0;
    file.seekg(offsetof(IMAGE_DOS_HEADER, e_lfanew));
    file.read(reinterpret_cast<char*>(&header), sizeof(header));
    file.seekp(header + offsetof(IMAGE_NT_HEADERS64, OptionalHeader.Subsystem));
    file.put(IMAGE_SUBSYSTEM_WINDOWS_GUI);
  }

  // The exact command line of each run so far.
  std::vector<std::string> CommandLines() const {
    std::vector<std::string> lines;
    std::ifstream log(log_, std::ios::binary);
    for (std::string line; std::getline(log, line);) lines.push_back(line);
    return lines;
  }

 private:
  std::filesystem::path tool_, scripts_, log_;
};
