// Stand-in for the helper service as a program: helper_service.exe SCRIPT LOG. Answers as SCRIPT says (read
// again for each request, so a test can change it), appends each request line to LOG, prints "ready", and
// ends when its standard input does. With a third word "busy" the pipe's only instance is taken for ever.
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>

#include "testing/stand_ins/pipe_server_win.h"

namespace {

ServiceAnswer Lookup(const std::filesystem::path& script_file, const std::string& action) {
  std::ifstream file(script_file, std::ios::binary);
  const nlohmann::json script = nlohmann::json::parse(file);
  if (script.contains(action)) return AnswerFromScript(script[action]);
  if (script.contains("*")) return AnswerFromScript(script["*"]);
  return Reply({{"success", false}, {"error", "Unknown action"}});
}

void WaitForEndOfInput() {
  std::cout << "ready" << std::endl;
  while (std::cin.get() != EOF) continue;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 3) return 2;
  if (argc > 3) {
    const BusyStandInService busy;
    WaitForEndOfInput();
    return 0;
  }
  std::mutex mutex;
  std::ofstream log(std::filesystem::path(argv[2]), std::ios::binary | std::ios::app);
  const auto keep = [&](const std::string& request) {
    const std::lock_guard lock(mutex);
    log << request << std::flush;
  };
  const StandInService service([&](const std::string& action) { return Lookup(argv[1], action); }, keep, 4);
  WaitForEndOfInput();
  return 0;
}
