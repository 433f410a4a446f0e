// What is known of a script before it runs: its lines, which of them a road can reach, and where its tags
// count.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

struct Script {
  std::string file{};  ///< empty: no script runs
  std::vector<ScriptLine> lines{};
  std::set<std::string> tags{};  ///< that it sets or tests, in capitals

  /// Whether anything behind this line (from 1) asks for the tag (in capitals): an IFSET, or a record of an
  /// SDR file that the script names.
  bool IsTagLive(const std::string& tag, std::size_t line) const;

  std::map<std::string, std::size_t> lastTests{};  ///< tag -> the last line that tests it
};

/// The script that a command line of the program runs; one without lines when it runs none, or one that the
/// program refuses.
Script ReadScript(const std::vector<std::string>& arguments);

}  // namespace varnok::rehearsal
