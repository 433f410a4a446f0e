// A run's traffic on a line: requests and the waits between them. Long waits are drawn short, or nothing else
// could be seen beside them.
#pragma once

#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// A stretch without a request.
struct Wait {
  std::uint64_t begun = 0;   ///< virtual microseconds
  std::uint64_t length = 0;  ///< virtual microseconds
  std::size_t before = 0;    ///< the request behind it, from 1; one more than there are at the end
  bool isCut = false;        ///< drawn shorter than it is
};

/// Places are units of the drawing.
struct Stretch {
  std::size_t begin = 0;
  std::size_t length = 0;
};

struct TimeLine {
  static constexpr std::size_t kUnits = 1000;  ///< of the whole drawing
  std::vector<Wait> waits{};
  std::vector<Stretch> reads{};   ///< requests that change nothing; neighbours are one stretch
  std::vector<Stretch> writes{};  ///< requests that can change what the board stores
  std::vector<Stretch> lost{};    ///< requests without an answer
  std::vector<Stretch> shortWaits{};
  std::vector<Stretch> cutWaits{};
};

TimeLine MakeTimeLine(const Run& run);

}  // namespace varnok::rehearsal
