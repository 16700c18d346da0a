#pragma once

#include <string>
#include <string_view>
#include <vector>

// What ends a line of a tool's output.
enum class LineEnding {
  kLineFeed,          // LF; one CR before it belongs to the ending
  kReturnOrLineFeed,  // CR, LF or CR LF; spaces and tabs around the line are no part of it
};

struct OutputLine {
  std::string text;  // bytes as printed, in whatever code page; never empty
  // Ended by CR or CR LF, as progress bars redraw themselves. kReturnOrLineFeed only.
  bool is_progress = false;

  bool operator==(const OutputLine&) const = default;
};

// Cuts output that arrives in pieces into lines, the same ones wherever the pieces were split. Empty lines
// are left out, and so is a last line that never gets its ending.
//   "Found Tarn Sync\r\n\r\n  10 %\r  100 %\r\nDone\n"
//     kLineFeed:         "Found Tarn Sync", "  10 %\r  100 %", "Done"
//     kReturnOrLineFeed: "Found Tarn Sync", "10 %", "100 %", "Done"
class LineCutter {
 public:
  explicit LineCutter(LineEnding ending) : ending_(ending) {}

  // The lines that `piece` completes.
  std::vector<OutputLine> Add(std::string_view piece);

 private:
  LineEnding ending_;
  std::string pending_;  // the line that has no ending yet
};
