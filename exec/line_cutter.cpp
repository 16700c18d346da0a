#include "exec/line_cutter.h"

#include <utility>

namespace {

std::string TrimBlanks(const std::string& line) {
  const size_t first = line.find_first_not_of(" \t");
  return first == line.npos ? std::string() : line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

}  // namespace

std::vector<OutputLine> LineCutter::Add(std::string_view piece) {
  // The LF of a CR LF ends an empty line, which is dropped like any other. So no state has to be carried
  // from one piece to the next.
  const std::string_view endings = ending_ == LineEnding::kLineFeed ? "\n" : "\r\n";
  std::vector<OutputLine> lines;
  for (size_t end; (end = piece.find_first_of(endings)) != piece.npos; piece.remove_prefix(end + 1)) {
    OutputLine line{std::exchange(pending_, {}).append(piece.substr(0, end)), piece[end] == '\r'};
    if (ending_ == LineEnding::kReturnOrLineFeed) {
      line.text = TrimBlanks(line.text);
    } else if (line.text.ends_with('\r')) {
      line.text.pop_back();
    }
    if (!line.text.empty()) lines.push_back(std::move(line));
  }
  pending_ += piece;
  return lines;
}
