// The board's virtual clock: stalls and exchanges advance it, nothing sleeps.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "firmware/firmware.h"

namespace varnok::sim {

class VirtualClock {
 public:
  /// Microseconds since the board was opened.
  std::uint64_t Elapsed() const { return elapsed_; }
  void Advance(std::uint64_t microseconds) { elapsed_ += microseconds; }

  /// The wall clock at the opening: `YYYY-MM-DDThh:mm:ss`, or `now` for this computer's local time. False for
  /// any other text.
  bool SetStart(std::string_view text);
  WallClock Now() const;

 private:
  std::int64_t startSeconds_ = 0;
  std::uint64_t elapsed_ = 0;
};

}  // namespace varnok::sim
