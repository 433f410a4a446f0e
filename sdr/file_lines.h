// An SDR file as lines: read forwards and backwards to remembered places, each line of at most 255
// characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "firmware/firmware.h"

namespace varnok {

class SdrFileLines {
 public:
  /// Takes the whole file into memory, as ReadTextFile does. A file that fails on the way gives its lines up
  /// to there.
  SdrFileLines(File& file, std::string_view name);

  bool IsAtEnd() const { return position_ >= text_.size() && !isBroken_; }
  /// The next line with its line end, or the next 255 characters of a longer one. False at the end and where
  /// the file cannot be read.
  bool Read(std::string_view& line);

  std::size_t Position() const { return position_; }
  void SetPosition(std::size_t position) { position_ = position; }

 private:
  std::string text_;
  std::size_t position_ = 0;
  bool isBroken_;
};

}  // namespace varnok
