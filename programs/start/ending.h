// How a program ended, in words.
#pragma once

#include <string>
#include <string_view>

#include "firmware/status.h"

namespace varnok::start {

struct Ending {
  bool isStarted = false;  ///< false: `status` is why the firmware did not start it
  Status status = kSuccess;
};

/// The place in `command`, a program's name and arguments, of the name without folders and ".EFI".
std::string_view ProgramName(std::string_view command);

/// One sentence. `program` is the program's name.
std::string EndingText(std::string_view program, const Ending& ending);

}  // namespace varnok::start
