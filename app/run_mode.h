// What one run of the program does; the command line chooses exactly one.
#pragma once

#include <cstdint>

namespace varnok {

enum class RunMode : std::int32_t {
  DisplayFru = 0,
  DisplaySdr = 1,
  DisplaySmbios = 2,
  LoadFruFile = 3,
  LoadSdrFile = 4,
  RunConfigFile = 5,
  ShowHelp = 6,
  NoMode = 7,
};

}  // namespace varnok
