// What a run wrote with status 0 that still does not fit the board.
#pragma once

#include <string>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// In words, each once: areas that are gone, FRU data that the standard calls wrong and that was not so
/// before, records about devices that the board does not have.
std::vector<std::string> MisfitsOf(const boards::Board& before, const BoardAfter& after);

}  // namespace varnok::rehearsal
