#include "exec/line_cutter.h"

#include <cstdlib>

#include <nlohmann/json.hpp>

#include "base/text.h"
#include "testing/fuzz_target.h"

// The first byte is the length of the pieces in which the rest arrives. The lines must not depend on it.
FUZZ_TARGET(line_cutter, bytes) {
  if (bytes.empty()) return;
  const size_t step = static_cast<unsigned char>(bytes[0]) + 1u;
  bytes.remove_prefix(1);
  for (const LineEnding ending : {LineEnding::kLineFeed, LineEnding::kReturnOrLineFeed}) {
    LineCutter whole(ending), pieces(ending);
    const std::vector<OutputLine> want = whole.Add(bytes);
    std::vector<OutputLine> lines;
    for (size_t i = 0; i < bytes.size(); i += step)
      for (OutputLine& line : pieces.Add(bytes.substr(i, step))) lines.push_back(std::move(line));
    if (lines != want) std::abort();
    for (const OutputLine& line : lines) {
      if (line.text.empty() || line.text.find('\n') != std::string::npos) std::abort();
      nlohmann::json(ConsoleTextToUtf8(line.text)).dump();  // must not throw, whatever a tool prints
    }
  }
}
