// Programming of the BMC's repository from a data set: clear, write, read back, compare.
#pragma once

#include <string_view>

#include "sdr/data_set.h"

namespace varnok {

/// Opens the named output file for appending; success without a name. kCannotOpenFile.
Status OpenSdrOutput(const char* operation);

/// Writes the set's selected records, unless it is only to be compared, and compares. kDifferent,
/// kOutOfMemory.
Status CommitSdrDataSet(SdrDataSet& set);

}  // namespace varnok
