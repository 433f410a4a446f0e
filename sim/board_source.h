// Where the board is: the folder that VARNOK_BOARD names, else the built-in default board, made at first use.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "sim/board.h"

namespace varnok::sim {

/// Looks an environment variable up; nothing when it does not exist.
using Environment = std::function<std::optional<std::string>(const char* name)>;
/// This process's environment.
std::optional<std::string> ProcessEnvironment(const char* name);

/// Fills the places of standard input, output and error where they are closed, so that no file that is opened
/// later gets what is meant for them: with a descriptor that can be neither read nor written there.
void TakeStandardDescriptors();

struct BoardSource {
  std::filesystem::path folder;
  bool isDefault = false;  ///< no variable named it: it may be created
};

/// `VARNOK_BOARD`; else `$XDG_STATE_HOME/varnok/board`; else `$HOME/.local/state/varnok/board`. Nothing, with
/// `error` set, when none of the three variables has a value.
std::optional<BoardSource> FindBoard(const Environment& environment, std::string& error);

/// Opens the board that the environment names, with the traffic log of `VARNOK_TRAFFIC`. Over the default
/// board `notice` becomes one line to show (on stderr, without a new line and the program's name) that says
/// which board this is and whether it was made just now, else it stays empty. Null with `error` set on
/// failure.
std::unique_ptr<Board> OpenBoard(const Environment& environment, std::string& notice, std::string& error);

}  // namespace varnok::sim
