// Boards of a fleet that a package treats alike, and what is to be said of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rehearsal/fleet.h"
#include "rehearsal/reports/findings.h"

namespace varnok::rehearsal {

/// A device that boards of one group hold different bytes in afterwards, or the same.
struct DeviceResults {
  std::string device{};
  std::vector<std::vector<std::size_t>> alike{};  ///< indices into Fleet::boards, by content
  std::vector<std::string> fields{};              ///< in which they differ
};

/// Boards whose roads end alike: the ends of the first are those of all.
struct FleetGroup {
  Fate fate = Fate::Unknown;
  std::vector<std::size_t> boards{};  ///< indices into Fleet::boards
  std::vector<DeviceResults> devices{};
};

/// The gravest first, then the largest.
std::vector<FleetGroup> GroupsOf(const Fleet& fleet);

struct FateWords {
  std::string_view word;     ///< "damaged"
  std::string_view meaning;  ///< in a sentence
};
FateWords WordsOf(Fate fate);

/// "a, b, c" of boards.
std::string NamesOf(const Fleet& fleet, const std::vector<std::size_t>& boards);
/// "FRU 0: Board Info Area; SDR", or that nothing changes.
std::string ChangesWords(const FleetEnd& end);
/// "status 4, Unable to update SDRs, after 5 writes; changes: SDR".
std::string EndWords(const FleetEnd& end);
/// "3 roads, the first: Which chassis? 1 (2U rack); …" or what one road was.
std::string RoadsWords(const FleetEnd& end);

/// How the boards of a group differ afterwards in a device: "the same on all of them afterwards".
std::string ResultsWords(const FleetGroup& group, const DeviceResults& results);
/// The longest run of the group's roads that end so, in virtual microseconds.
std::uint64_t LongestRun(const Fleet& fleet, const FleetGroup& group, const FleetEnd& end);
/// What was rehearsed: "all roads, each probe as its board answers".
std::string_view RoadsChoiceWords(const Fleet& fleet);

std::vector<Finding> FindingsOf(const Fleet& fleet);
/// The rehearsal in one sentence.
std::string Verdict(const Fleet& fleet, const std::vector<FleetGroup>& groups);

}  // namespace varnok::rehearsal
