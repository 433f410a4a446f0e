// The built-in board: a two-socket server board of an invented maker, for rehearsals and for the first try.
#pragma once

#include <string>
#include <vector>

#include "sim/image.h"

namespace varnok::sim {

struct DefaultFile {
  std::string name;
  Bytes content;
};

/// Every file of the folder but board.json.
std::vector<DefaultFile> DefaultBoardImages();
/// The text of board.json.
Bytes DefaultBoardConfig();
/// The content of sdr.bin.
Bytes DefaultSdrs();
/// The content of smbios.bin.
Bytes DefaultSmbiosDump();

}  // namespace varnok::sim
