// One run of the whole program on hostile input.
#pragma once

#include <filesystem>
#include <string>

namespace varnok::fuzz {

/// What is empty is what the default board has, an honest BMC, or keys that answer every question.
struct ProgramInput {
  std::string commandLine;  ///< split at blanks
  std::string file;         ///< what a file that is none of the samples holds
  std::string answers;      ///< see HostileBmc
  std::string image;        ///< the system board's FRU device
  std::string smbios;       ///< the structure table
  std::string keys;
  std::string repository;   ///< records back to back; what is no whole record at the end is left out
  std::string description;  ///< board.json
};

/// The folder of a default board that no run has changed. There is one at a time.
std::filesystem::path FreshBoard();

void Run(const ProgramInput& input);

}  // namespace varnok::fuzz
