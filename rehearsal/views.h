// Whether the program can show what a board holds: each device, and the SDRs.
#pragma once

#include <string>
#include <vector>

#include "rehearsal/stage.h"

namespace varnok::rehearsal {

struct View {
  std::string name;                  ///< "FRU 0", "SDR", as reports call it
  std::vector<std::string> command;  ///< the program's, its name in front
};

/// One for each device of the board, and one for its SDRs.
std::vector<View> ViewsOf(const boards::Board& board);

/// Whether the program shows it on the board that holds these images, with status 0. Leaves the stage with
/// that board and that command.
bool Shows(Stage& stage, const View& view, const Images& images);

}  // namespace varnok::rehearsal
