// The machine's SMBIOS tables as `dmidecode --dump-bin` writes them.
#pragma once

#include "boards/board_data.h"

namespace varnok::boards {

/// The 2.x entry point, saying that the table stands behind it at offset 20h, and the table. Empty when the
/// firmware has no 2.x entry point.
Bytes DumpSmbios();

}  // namespace varnok::boards
