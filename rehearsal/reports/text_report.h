// A rehearsal as text for a terminal: what was found first, then a table of roads, the boards that they leave
// and the faults. About a screenful, unless everything is asked for.
#pragma once

#include <string>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

std::vector<std::string> TextReport(const Report& report, bool isVerbose);

}  // namespace varnok::rehearsal
