// Text into files: 16-bit, little-endian, as the program writes all its logs and output files.
#pragma once

#include <string_view>

#include "firmware/firmware.h"

namespace varnok {

/// Writes the characters as they are; no byte-order mark, no change of line ends.
Status WriteText(File& file, std::u16string_view text);

}  // namespace varnok
