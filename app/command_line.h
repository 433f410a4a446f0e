// The command line, reduced to one run mode and one file name.
#pragma once

#include <string>
#include <string_view>

#include "app/run_mode.h"

namespace varnok {

/// The longest file name that the program handles, in characters.
inline constexpr std::size_t kFileNameLength = 255;

/// What an option makes of the run, and the extension of the file behind it.
struct ModeRow {
  std::string_view name;
  RunMode mode;
  std::u16string_view extension = {};
};
/// Options, without the '/' or '-' that begins them.
inline constexpr ModeRow kModeOptions[] = {{"?", RunMode::ShowHelp},
                                           {"h", RunMode::ShowHelp},
                                           {"cfg", RunMode::RunConfigFile, u".CFG"},
                                           {"d", RunMode::DisplayFru},
                                           {"fru", RunMode::LoadFruFile, u".FRU"},
                                           {"sdr", RunMode::LoadSdrFile, u".SDR"}};
/// What stands behind the option that displays.
inline constexpr ModeRow kDisplayAreas[] = {
    {"sdr", RunMode::DisplaySdr}, {"smb", RunMode::DisplaySmbios}, {"fru", RunMode::DisplayFru}};

struct CommandLine {
  RunMode mode = RunMode::NoMode;
  std::u16string fileName;  ///< with its default extension
};

/// Reads the arguments behind argv[0]: '/' and '-' both begin an option, letter
/// case does not matter, and just one option may be given. False when the line
/// is invalid. The arguments behind "/d fru" go to the FRU manager.
bool ReadCommandLine(int argc, char* argv[], CommandLine& commandLine);

}  // namespace varnok
