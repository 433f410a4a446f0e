#include "rehearsal/report.h"

#include <map>

namespace varnok::rehearsal {

bool IsEndedByScript(const Run& run) {
  return run.message.starts_with("Configuration file exiting due to ERRORLEVEL");
}

Gravity GravityOf(const FaultRun& run) {
  const bool isWrongSuccess = run.exitStatus == 0 && !run.isEndless &&
                              (run.outcome != FaultOutcome::Wanted || run.output == FaultOutput::Other);
  if (run.hasCrashed) return Gravity::Crashed;
  if (isWrongSuccess && !run.isTold) return Gravity::FalseSuccess;
  if (!run.canBeShown) return Gravity::CannotBeShown;
  if (!run.rerunReaches && !run.restoreReaches) return Gravity::NoWayBack;
  if (isWrongSuccess) return Gravity::ToldSuccess;
  if (!run.rerunReaches) return Gravity::Stuck;
  return run.isEndless ? Gravity::Endless : Gravity::Harmless;
}

std::vector<std::size_t> Report::UnreachedLines() const {
  std::vector<std::size_t> lines;
  for (std::size_t i = 0; i < script.size(); ++i)
    if (script[i].isCommand && script[i].reached == 0) lines.push_back(i + 1);
  return lines;
}

std::vector<std::vector<std::size_t>> Report::EqualRoads() const {
  std::map<std::size_t, std::vector<std::size_t>> byBoard;
  for (std::size_t i = 0; i < roads.size(); ++i)
    if (!roads[i].joins) byBoard[roads[i].run.board].push_back(i);
  std::vector<std::vector<std::size_t>> groups;
  for (auto& [after, equal] : byBoard)
    if (equal.size() > 1) groups.push_back(std::move(equal));
  return groups;
}

}  // namespace varnok::rehearsal
