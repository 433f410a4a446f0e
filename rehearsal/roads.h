// All roads through a package, as a report.
#pragma once

#include <functional>

#include "rehearsal/rehearse.h"

namespace varnok::rehearsal {

struct RoadOptions {
  std::size_t limit = 10'000;  ///< the most roads
  unsigned cores = 1;          ///< the most processes at once
  bool isProbing = true;       ///< each probe comes to what else it can come to, too
  std::function<void(std::size_t roads)> progress = [](std::size_t) {};
};

/// Goes all roads. The report is the same each time, whatever process came first. False, with `error` set,
/// when the system has no process or no memory for it.
bool GoAllRoads(Stage& stage, const RoadOptions& options, Report& report, std::string& error);

/// What was answered on a road from its beginning to its end, the end of the road that it joins included.
std::vector<Given> AnswersOf(const Report& report, std::size_t index);

}  // namespace varnok::rehearsal
