#include "rehearsal/reports/fault_groups.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

// clang-format off
constexpr std::array<CellWords, kCellCount> kCells = {{
    {"c-crashed", "crashed", "the program broke off: a fault of its own"},
    {"c-false", "false success", "status 0 and, without a word, another board or output than the wanted one"},
    {"c-unshown", "cannot be shown", "the program cannot show the board any more"},
    {"c-noway", "no way back", "neither a rerun nor restore leaves that state"},
    {"c-told", "told success", "status 0 and another board or output than the wanted one; the error output tells"},
    {"c-stuck", "stuck", "a rerun does not reach the wanted board; restore helps"},
    {"c-endless", "endless", "the run waits for ever"},
    {"c-rerun", "rerun helps", "an error and a board in between; the same package mends it"},
    {"c-old", "old board", "an error, and the board is as it was"},
    {"c-wanted", "wanted board", "the board is the wanted one"},
}};
// clang-format on

}  // namespace

const CellWords& WordsOf(Cell cell) {
  return kCells[static_cast<std::size_t>(cell)];
}

Cell CellOf(const FaultRun& run) {
  switch (GravityOf(run)) {
    case Gravity::Crashed:
      return Cell::Crashed;
    case Gravity::FalseSuccess:
      return Cell::FalseSuccess;
    case Gravity::CannotBeShown:
      return Cell::CannotBeShown;
    case Gravity::NoWayBack:
      return Cell::NoWayBack;
    case Gravity::ToldSuccess:
      return Cell::ToldSuccess;
    case Gravity::Stuck:
      return Cell::Stuck;
    case Gravity::Endless:
      return Cell::Endless;
    case Gravity::Harmless:
      break;
  }
  if (run.outcome == FaultOutcome::Wanted) return Cell::Wanted;
  return run.outcome == FaultOutcome::Old ? Cell::Old : Cell::RerunHelps;
}

std::array<std::size_t, kCellCount> CountCells(const Report& report) {
  std::array<std::size_t, kCellCount> counts{};
  for (const FaultRun& run : report.faults) ++counts[static_cast<std::size_t>(CellOf(run))];
  return counts;
}

std::vector<FaultGroup> GraveGroups(const Report& report) {
  struct Requests {
    std::vector<std::size_t> numbers;
    const FaultRun* example = nullptr;
  };
  std::map<std::tuple<Cell, std::size_t, std::string>, Requests> byKind;
  for (const FaultRun& run : report.faults) {
    if (GravityOf(run) == Gravity::Harmless) continue;
    Requests& requests = byKind[{CellOf(run), run.road, run.kind}];
    requests.numbers.push_back(run.request);
    if (requests.example == nullptr) requests.example = &run;
  }
  // Kinds that hit the same requests of a road make one group, and so do roads on which that is the same.
  std::map<std::tuple<Cell, std::size_t, std::vector<std::size_t>>, FaultGroup> byRequests;
  for (auto& [key, requests] : byKind) {
    const auto& [cell, road, kind] = key;
    std::sort(requests.numbers.begin(), requests.numbers.end());
    requests.numbers.erase(std::unique(requests.numbers.begin(), requests.numbers.end()),
                           requests.numbers.end());
    FaultGroup& group = byRequests[{cell, road, requests.numbers}];
    if (group.example == nullptr) group = {cell, {road}, {}, requests.numbers, requests.example};
    group.kinds.push_back(kind);
  }
  std::map<std::tuple<Cell, std::vector<std::string>, std::vector<std::size_t>>, FaultGroup> byPlace;
  for (auto& [key, group] : byRequests) {
    const auto [place, isNew] = byPlace.try_emplace({group.cell, group.kinds, group.requests}, group);
    if (!isNew) place->second.roads.push_back(group.roads.front());
  }
  std::vector<FaultGroup> groups;
  groups.reserve(byPlace.size());
  for (auto& [key, group] : byPlace) groups.push_back(std::move(group));
  std::stable_sort(groups.begin(), groups.end(), [](const FaultGroup& left, const FaultGroup& right) {
    return left.cell != right.cell ? left.cell < right.cell : left.Runs() > right.Runs();
  });
  return groups;
}

std::string KindsWords(const std::vector<std::string>& kinds, std::size_t limit) {
  std::string text;
  for (std::size_t i = 0; i < std::min(limit, kinds.size()); ++i)
    text += (i == 0 ? "" : "; ") + Printable(kinds[i]);
  if (kinds.size() > limit) text += " and " + Count(kinds.size() - limit, "more kind");
  return text;
}

std::string PlaceWords(const Report& report, const FaultGroup& group, std::size_t limit) {
  const std::string names = RequestNames(report, group.roads.front(), group.requests);
  return "road " + Ranges(FromOne(group.roads), limit) + ", request " + Ranges(group.requests, limit) +
         (names.empty() ? "" : " (" + names + ")");
}

std::string RequestNames(const Report& report, std::size_t road, const std::vector<std::size_t>& requests) {
  if (road >= report.roads.size()) return {};
  const std::vector<Exchange>& traffic = report.roads[road].run.traffic;
  std::vector<std::string> names;
  for (const std::size_t request : requests) {
    if (request == 0 || request > traffic.size()) continue;
    std::string name = Printable(traffic[request - 1].name);
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
  }
  std::string text;
  for (std::size_t i = 0; i < std::min<std::size_t>(names.size(), 3); ++i)
    text += (i == 0 ? "" : ", ") + names[i];
  return names.size() > 3 ? text + ", …" : text;
}

std::string Explanation(const FaultRun& run) {
  std::string text = run.isEndless ? "does not end" : EndWords(run.exitStatus, run.message);
  if (run.hasCrashed) return text;  // it took along what the board held
  text += run.outcome == FaultOutcome::Wanted ? "; the board is the wanted one"
          : run.outcome == FaultOutcome::Old  ? "; the board is the old one"
                                              : "; the board is in between";
  if (!run.canBeShown) text += " and cannot be shown";
  if (run.rerunReaches)
    text += run.outcome == FaultOutcome::Wanted ? "" : "; a rerun reaches the wanted one";
  else
    text +=
        run.restoreReaches ? "; a rerun does not help, restore does" : "; neither a rerun nor restore helps";
  if (run.exitStatus == 0 && run.output == FaultOutput::Same && !run.isTold &&
      run.outcome != FaultOutcome::Wanted)
    text += "; the console shows nothing unusual";
  return text;
}

}  // namespace varnok::rehearsal
