// The roads that a report tells from request to request: one for each board, of many thousands a few.
#pragma once

#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// Ascending, at most 12: for each board, those of broken roads first, the road with most requests.
std::vector<std::size_t> ToldRoads(const Report& report);

}  // namespace varnok::rehearsal
