// What a board says, as text for a person and with the bytes beside it.
#pragma once

#include <string>
#include <vector>

#include "boards/decoded.h"
#include "boards/source.h"

namespace varnok::boards {

struct ShowOptions {
  bool hasDetails = false;  ///< every field of every record, and the layout of areas
  bool hasHex = false;      ///< the bytes of FRU devices with their areas marked
};

/// Lines for a terminal. `findings` counts what is wrong with the data.
std::vector<std::string> ShowSource(const Source& source, const ShowOptions& options, std::size_t& findings);

/// "firmware 2.61, IPMI 2.0, ..." as fields of a section without bytes.
Section IdentitySection(const Controller& controller);

/// One line of a record for lists: what it is, and for a sensor its unit and its thresholds.
std::string SummaryOf(ByteView record, const Decoded& decoded);

}  // namespace varnok::boards
