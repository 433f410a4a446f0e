// The SMBIOS tables of a board in short (DMTF DSP0134): what firmware, system, board, chassis, processors and
// memory say of themselves; of the other structures that they are there.
#pragma once

#include "boards/decoded.h"

namespace varnok::boards {

/// `dump` is as `dmidecode --dump-bin` writes it. A section for each structure, "type 17 #2" being the second
/// memory device; those without a place in the short list have their bytes as one field.
Decoded DecodeSmbios(ByteView dump);

}  // namespace varnok::boards
