#include "net/ports.h"

#include <string>
#include <vector>

#include "base/text.h"

namespace {

constexpr size_t kShortestLine = 9;

std::vector<std::string> SplitAtBlanks(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r\n\v\f";
  std::vector<std::string> tokens;
  for (size_t begin = 0; (begin = line.find_first_not_of(kBlanks, begin)) != line.npos;) {
    const size_t end = line.find_first_of(kBlanks, begin);
    tokens.emplace_back(line.substr(begin, end - begin));
    if (end == line.npos) break;
    begin = end;
  }
  return tokens;
}

}  // namespace

nlohmann::json ParseListeningPorts(std::string_view output) {
  nlohmann::json ports = nlohmann::json::array();
  while (!output.empty()) {
    const std::string_view line = output.substr(0, output.find('\n'));
    output.remove_prefix(line.size() < output.size() ? line.size() + 1 : line.size());
    if (line.size() < kShortestLine || line.find("LISTENING") == line.npos) continue;
    const std::vector<std::string> tokens = SplitAtBlanks(ConsoleTextToUtf8(line));
    if (tokens.size() < 5) continue;
    const std::string& local = tokens[1];
    const size_t colon = local.rfind(':');
    ports.push_back({{"proto", tokens[0]},
                     {"local", local},
                     {"port", colon == local.npos ? "" : local.substr(colon + 1)},
                     {"state", tokens[3]},
                     {"pid", tokens[4]}});
  }
  return ports;
}
