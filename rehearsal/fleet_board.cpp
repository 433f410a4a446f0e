// One board of a fleet: its roads, put together by how they end.
#include <algorithm>

#include "boards/fru_image.h"
#include "boards/sdr_record.h"
#include "rehearsal/fleet.h"
#include "rehearsal/hash.h"
#include "rehearsal/misfits.h"
#include "rehearsal/roads.h"
#include "rehearsal/views.h"

namespace varnok::rehearsal {
namespace {

/// What is told of a board that roads leave, whichever roads they are.
struct Leftover {
  std::vector<std::string> changes{};
  std::vector<std::string> blind{};    ///< what the program cannot show any more
  std::vector<std::string> misfits{};  ///< what does not fit the board
  std::vector<DeviceContent> contents{};
};

/// Parts of the board with the areas that change: how many records and fields is each board's own affair.
std::vector<std::string> ChangesOf(const BoardAfter& after) {
  std::vector<std::string> changes;
  std::string part;
  std::string group;
  for (const boards::Difference& difference : after.differences) {
    const bool hasAreas = difference.part != "SDR" && !difference.group.empty();
    if (difference.part != part) {
      changes.push_back(difference.part + (hasAreas ? ": " + difference.group : ""));
    } else if (hasAreas && difference.group != group) {
      changes.back() += ", " + difference.group;
    }
    part = difference.part;
    group = difference.group;
  }
  return changes;
}

std::uint64_t ContentHash(const DeviceImage& device) {
  if (device.device != "SDR") return HashOf(device.after);
  constexpr std::size_t kIdSize = 2;
  std::vector<Bytes> records;
  std::uint64_t hash = HashOf(boards::SplitRecords(device.after, records));
  for (const Bytes& record : records) hash = Mixed(hash, HashOf(std::span(record).subspan(kIdSize)));
  return hash;
}

class BoardTeller {
 public:
  BoardTeller(Stage& stage, Report& report) : stage_(stage), report_(report) {
    for (BoardAfter& after : report.boards) leftovers_.push_back(Look(after));
  }

  void Tell(FleetBoard& board) {
    for (std::size_t i = 0; i < report_.roads.size(); ++i) AddRoad(board.ends, i);
    for (std::size_t i = 0; i < board.ends.size(); ++i) board.ends[i].results = boards_[i].size();
    std::stable_sort(board.ends.begin(), board.ends.end(),
                     [](const FleetEnd& left, const FleetEnd& right) { return left.fate < right.fate; });
  }

 private:
  Leftover Look(BoardAfter& after) {
    Leftover leftover{.changes = ChangesOf(after)};
    if (after.devices.empty()) return leftover;
    for (const View& view : ViewsOf(stage_.Described())) {
      const auto isThis = [&view](const DeviceImage& device) { return device.device == view.name; };
      if (std::none_of(after.devices.begin(), after.devices.end(), isThis)) continue;
      if (!Shows(stage_, view, after.images) && Shows(stage_, view, stage_.Before()))
        leftover.blind.push_back("the program cannot show " + view.name + " any more");
    }
    leftover.misfits = MisfitsOf(stage_.Described(), after);
    for (const DeviceImage& device : after.devices)
      leftover.contents.push_back({.device = device.device, .hash = ContentHash(device)});
    return leftover;
  }

  static Fate FateOf(const Run& run, const Leftover& leftover) {
    const bool isBroken = run.exitStatus != 0 && run.writes != 0;
    if (isBroken || !leftover.blind.empty()) return Fate::Damaged;
    if (run.exitStatus != 0) return IsEndedByScript(run) ? Fate::Refused : Fate::Failed;
    if (leftover.contents.empty()) return Fate::Untouched;
    return leftover.misfits.empty() ? Fate::Changed : Fate::Doubtful;
  }

  void AddRoad(std::vector<FleetEnd>& ends, std::size_t road) {
    const Run& run = report_.roads[road].run;
    const Leftover& leftover = leftovers_[run.board];
    FleetEnd end{.fate = FateOf(run, leftover),
                 .exitStatus = run.exitStatus,
                 .message = run.message,
                 .changes = leftover.changes,
                 .reasons = leftover.blind};
    end.reasons.insert(end.reasons.end(), leftover.misfits.begin(), leftover.misfits.end());
    auto known =
        std::find_if(ends.begin(), ends.end(), [&](const FleetEnd& each) { return each.IsLike(end); });
    if (known == ends.end()) {
      end.answers = AnswersOf(report_, road);
      end.first = report_.boards[run.board];
      end.first.images.clear();
      boards_.emplace_back();
      known = ends.insert(ends.end(), std::move(end));
    }
    ++known->roads;
    known->requests = std::max(known->requests, run.requests);
    known->writes = std::max(known->writes, run.writes);
    known->microseconds = std::max(known->microseconds, run.microseconds);
    if (boards_[static_cast<std::size_t>(known - ends.begin())].insert(run.board).second)
      MixIn(known->contents, leftover.contents);
  }

  static void MixIn(std::vector<DeviceContent>& all, const std::vector<DeviceContent>& more) {
    for (const DeviceContent& each : more) {
      const auto found =
          std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.device == each.device; });
      DeviceContent& content = found == all.end() ? all.emplace_back(DeviceContent{each.device}) : *found;
      content.hash = Mixed(content.hash, each.hash);
    }
  }

  Stage& stage_;
  Report& report_;
  std::vector<Leftover> leftovers_;            ///< by board
  std::vector<std::set<std::size_t>> boards_;  ///< by end, before they are sorted
};

/// One road, or all of them.
bool GoRoads(Stage& stage, const FleetChoice& choice, unsigned cores, Report& report, FleetBoard& board) {
  if (choice.answers == nullptr)
    return GoAllRoads(stage, {.limit = choice.limit, .cores = cores, .isProbing = false}, report,
                      board.error);
  Outcome outcome;
  if (!RunOnce(stage, *choice.answers, outcome, board.error)) return false;
  board.runs = 1;
  board.unusedAnswers = outcome.unusedAnswers;
  for (const std::string& problem : outcome.problems)
    board.error += (board.error.empty() ? "" : "; ") + problem;
  ReportBuilder builder(stage);
  builder.Add(std::move(outcome));
  report = builder.Finish();
  report.runs = 1;
  return board.error.empty();
}

}  // namespace

bool FleetEnd::IsLike(const FleetEnd& other) const {
  return fate == other.fate && exitStatus == other.exitStatus && message == other.message &&
         changes == other.changes && reasons == other.reasons;
}

FleetBoard RehearseBoard(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                         const FleetChoice& choice, unsigned cores) {
  FleetBoard board{.name = folder.filename().string()};
  const std::unique_ptr<Stage> stage = Stage::Open(folder, arguments, board.error);
  Report report;
  if (stage == nullptr || !GoRoads(*stage, choice, cores, report, board)) return board;
  BoardTeller(*stage, report).Tell(board);
  for (std::size_t i = 0; i < report.script.size(); ++i)
    if (report.script[i].reached != 0) board.lines.push_back(i + 1);
  for (const std::string& tag : stage->TheScript().tags)
    if (std::find(report.unsetTags.begin(), report.unsetTags.end(), tag) == report.unsetTags.end())
      board.tags.push_back(tag);
  board.roads = report.roads.size();
  board.roadsCut = report.roadsCut;
  board.runs = report.runs;
  return board;
}

}  // namespace varnok::rehearsal
