#pragma once

#include <string>
#include <string_view>
#include <vector>

// The line endings of a tool's output.
enum class LineEnding {
  kLineFeed,          // LF; a CR before it belongs to the ending
  kReturnOrLineFeed,  // CR, LF or CR LF; spaces and tabs around the line are dropped
};

struct OutputLine {
  std::string text;  // bytes as printed, in whatever code page; never empty
  // Ended by CR or CR LF, as a redrawn progress bar is. Set for kReturnOrLineFeed only.
  bool is_progress = false;

  bool operator==(const OutputLine&) const = default;
};

// Cuts output that arrives in pieces into lines. The lines do not depend on where the pieces are split.
// Empty lines are dropped, and so is a last line without an ending.
//   "Found Tarn Sync\r\n\r\n  10 %\r  100 %\r\nDone\n"
//     kLineFeed:         "Found Tarn Sync", "  10 %\r  100 %", "Done"
//     kReturnOrLineFeed: "Found Tarn Sync", "10 %", "100 %", "Done"
class LineCutter {
 public:
  explicit LineCutter(LineEnding ending) : ending_(ending) {}

  // Returns the lines that `piece` completes.
  std::vector<OutputLine> Add(std::string_view piece);

 private:
  LineEnding ending_;
  std::string pending_;  // the line that has no ending yet
};
