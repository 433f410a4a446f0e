#include <algorithm>

#include "rehearsal/reports/fleet_groups.h"
#include "rehearsal/reports/fleet_report.h"
#include "rehearsal/reports/junit_suite.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr Fate kFailing[] = {Fate::Damaged, Fate::Doubtful, Fate::Unknown, Fate::Failed};

std::string WhyOf(const FleetBoard& board) {
  if (board.ends.empty()) return board.error;
  const FleetEnd& gravest = board.ends.front();
  std::string why = EndWords(gravest);
  for (const std::string& reason : gravest.reasons) why += "; " + reason;
  return why;
}

}  // namespace

std::string FleetJunit(const Fleet& fleet) {
  Suite suite("boards", fleet.package);
  for (const FleetBoard& board : fleet.boards) {
    std::uint64_t longest = 0;
    for (const FleetEnd& end : board.ends) longest = std::max(longest, end.microseconds);
    const Fate fate = board.TheFate();
    const bool hasFailed = std::find(std::begin(kFailing), std::end(kFailing), fate) != std::end(kFailing);
    const Element failure = FailureElement(WordsOf(fate).word, WhyOf(board));
    suite.Case(board.name, longest, hasFailed ? &failure : nullptr);
  }
  return SuitesMarkup(suite.Markup());
}

}  // namespace varnok::rehearsal
