#include "sdr/file_lines.h"

#include <algorithm>

#include "app/services/text_file.h"

namespace varnok {

SdrFileLines::SdrFileLines(File& file, std::string_view name)
    : isBroken_(ReadTextFile(file, name, text_) != kSuccess) {}

bool SdrFileLines::Read(std::string_view& line) {
  constexpr std::size_t kLongestLine = 255;
  // No further than a line reaches: a file without line ends is not searched to its end for every piece.
  std::string_view rest = std::string_view(text_).substr(std::min(position_, text_.size()), kLongestLine);
  std::size_t end = rest.find('\n');
  // What stands in front of the place where the file fails may be half a line.
  bool isWhole = end != std::string_view::npos || rest.size() == kLongestLine;
  if (rest.empty() || (isBroken_ && !isWhole)) return false;
  line = rest.substr(0, end == std::string_view::npos ? rest.size() : end + 1);
  position_ += line.size();
  return true;
}

}  // namespace varnok
