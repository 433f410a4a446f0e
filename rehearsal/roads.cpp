#include "rehearsal/roads.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "rehearsal/answers.h"
#include "rehearsal/road_map.h"

namespace varnok::rehearsal {
namespace {

using Clock = std::chrono::steady_clock;

/// So many different roads keep their traffic in the report.
constexpr std::size_t kMostTraffic = 24;

/// Waits for a process, and says meanwhile how far it is.
int Await(pid_t child, const SharedState& shared, const RoadOptions& options) {
  constexpr std::chrono::milliseconds kLongestPause{50};
  std::chrono::milliseconds pause{1};
  int status = 0;
  for (;;) {
    const pid_t ended = waitpid(child, &status, WNOHANG);
    if (ended == child || (ended < 0 && errno != EINTR)) return status;
    options.progress(shared.Roads());
    std::this_thread::sleep_for(pause);
    pause = std::min(2 * pause, kLongestPause);
  }
}

bool Explore(Stage& stage, const RoadOptions& options, RoadMap& map, std::size_t& cut, std::string& error) {
  Results results;
  const auto shared = SharedState::Make(options.limit, options.cores, error);
  if (shared == nullptr || !results.Open(error)) return false;
  std::fflush(nullptr);
  // A process whose parent dies becomes this one's.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t child = fork();
  if (child == 0) Explorer(stage, *shared, results, options.isProbing).Go();
  if (child < 0) {
    error = std::string("no process for the program: ") + std::strerror(errno);
    return false;
  }
  const int status = Await(child, *shared, options);
  while (waitpid(-1, nullptr, 0) > 0 || errno == EINTR) {
  }
  bool isWhole = true;
  isWhole = results.Take([&](auto record) { isWhole = map.Take(record) && isWhole; }) && isWhole;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    Trace death{.kind = TraceKind::Death, .outcome = OutcomeOfDeath(stage, status)};
    map.Take(ToWire(death));
  }
  cut = shared->Cut();
  if (!isWhole || !map.start) error = "the roads' results were lost";
  return error.empty();
}

/// Goes the map's ways in the order of the answers, and so tells the roads in the same order each time.
class RoadTeller {
 public:
  RoadTeller(Stage& stage, const RoadMap& map, ReportBuilder& builder)
      : stage_(stage), map_(map), builder_(builder) {
    for (const Trace& leaf : map.leaves)
      if (!leaf.outcome.images.empty()) images_.emplace(leaf.images, &leaf.outcome.images);
  }

  bool Tell(std::string& error) {
    bool isGood = Follow(*map_.start, error);
    while (isGood && !open_.empty()) {
      Frame& frame = open_.back();
      answers_.resize(frame.answers);
      if (frame.next == frame.state->ways.end()) {
        open_.pop_back();
        continue;
      }
      const Way& way = (frame.next++)->second;
      const Question& question = frame.state->question;
      if (question.line != 0)
        answers_.push_back({.question = question, .text = way.text, .isInvalid = way.isInvalid});
      isGood = Follow(way, error);
    }
    return isGood && KeepTraffic(error);
  }

  std::size_t Runs() const { return runs_; }
  /// Ways into states out of which no road leads, since they were cut.
  std::size_t Cut() const { return cut_; }

 private:
  struct Frame {
    const State* state;
    std::map<std::uint32_t, Way>::const_iterator next;
    std::size_t answers;
  };
  struct First {
    std::size_t road;
    std::size_t answers;
  };

  Report& SoFar() { return builder_.SoFar(); }

  bool Follow(const Way& way, std::string& error) {
    if (way.isEnd) return TellEnd(map_.leaves[way.leaf], error);
    const auto [first, isNew] = firsts_.try_emplace(way.state, First{SoFar().roads.size(), answers_.size()});
    if (!isNew) return TellJoin(way, first->second, error);
    const State& state = map_.states.at(way.state);
    open_.push_back({&state, state.ways.begin(), answers_.size()});
    return true;
  }

  bool RunAgain(std::vector<Given> given, Outcome& outcome, std::string& error) {
    GivenAnswers answers(std::move(given));
    ++runs_;
    return RunOnce(stage_, answers, outcome, error);
  }

  bool TellEnd(const Trace& leaf, std::string& error) {
    Outcome outcome = leaf.outcome;
    const bool isDeath = leaf.kind == TraceKind::Death;
    const bool isExact = isDeath || outcome.given == answers_;
    std::uint64_t traffic = leaf.traffic;
    if (!isExact) {
      // Another road was the first in a state of this one: what it showed is not what this one shows.
      if (!RunAgain(answers_, outcome, error)) return false;
      outcome.run.traffic.clear();
    } else if (outcome.images.empty()) {
      outcome.images = *images_.at(leaf.images);
    }
    if (isDeath) outcome.given = answers_;
    builder_.Add(std::move(outcome));
    isExact_.push_back(isExact);
    traffic_.push_back(isDeath ? 0 : traffic);
    return true;
  }

  bool TellJoin(const Way& way, const First& first, std::string& error) {
    Report& report = SoFar();
    if (first.road >= report.roads.size()) {
      ++cut_;
      return true;
    }
    const Road& other = report.roads[first.road];
    const State& state = map_.states.at(way.state);
    Road road{.answers = StepsOf(builder_, answers_),
              .run = other.run,
              .joins = first.road,
              .joinsAt = first.answers,
              .lines = other.lines};
    road.run.transcript.clear();
    road.run.traffic.clear();
    if (way.join && isExact_[first.road]) {
      const Outcome& here = map_.joins[*way.join].outcome;
      const Run& there = state.arrival.run;
      road.run.microseconds += here.run.microseconds - there.microseconds;
      road.run.stalled += here.run.stalled - there.stalled;
      road.run.requests += here.run.requests - there.requests;
      road.run.writes += here.run.writes - there.writes;
      // Behind the state's line both go through the same.
      const std::size_t line = state.question.line;
      std::erase_if(road.lines, [line](std::size_t each) { return line == 0 || each < line; });
      std::set<std::size_t> lines(here.lines.begin(), here.lines.end());
      lines.insert(road.lines.begin(), road.lines.end());
      road.lines.assign(lines.begin(), lines.end());
      builder_.MarkTags(here.tags);
    } else if (!JoinByRunning(road, error)) {
      return false;
    }
    builder_.Add(std::move(road));
    isExact_.push_back(way.join && isExact_[first.road]);
    traffic_.push_back(0);
    return true;
  }

  /// Fills in what a whole run of the road tells.
  bool JoinByRunning(Road& road, std::string& error) {
    std::vector<Given> given = answers_;
    const std::vector<Given> rest = AnswersOf(SoFar(), *road.joins);
    given.insert(given.end(), rest.begin() + static_cast<std::ptrdiff_t>(road.joinsAt), rest.end());
    Outcome outcome;
    if (!RunAgain(std::move(given), outcome, error)) return false;
    builder_.MarkTags(outcome.tags);
    road.lines = outcome.lines;
    road.run.microseconds = outcome.run.microseconds;
    road.run.stalled = outcome.run.stalled;
    road.run.requests = outcome.run.requests;
    road.run.writes = outcome.run.writes;
    return true;
  }

  /// The first roads of each traffic are run once more for it.
  bool KeepTraffic(std::string& error) {
    std::set<std::uint64_t> kept;
    for (std::size_t i = 0; i < traffic_.size() && kept.size() < kMostTraffic; ++i) {
      if (traffic_[i] == 0 || !kept.insert(traffic_[i]).second) continue;
      Outcome outcome;
      if (!RunAgain(AnswersOf(SoFar(), i), outcome, error)) return false;
      SoFar().roads[i].run.traffic = std::move(outcome.run.traffic);
    }
    return true;
  }

  Stage& stage_;
  const RoadMap& map_;
  ReportBuilder& builder_;
  std::unordered_map<std::uint64_t, const Images*> images_;
  std::vector<Frame> open_;
  std::vector<Given> answers_;
  std::unordered_map<std::uint64_t, First> firsts_;  ///< state -> the first road that came through
  std::vector<bool> isExact_;           ///< by road: the exploration went it with these very answers
  std::vector<std::uint64_t> traffic_;  ///< by road, a hash; 0: none
  std::size_t runs_ = 0;
  std::size_t cut_ = 0;
};

}  // namespace

std::vector<Given> AnswersOf(const Report& report, std::size_t index) {
  const Road& road = report.roads[index];
  std::vector<Given> given;
  for (const Answer& answer : road.answers)
    given.push_back(
        {.question = report.questions[answer.question], .text = answer.text, .isInvalid = answer.isInvalid});
  if (!road.joins) return given;
  const std::vector<Given> rest = AnswersOf(report, *road.joins);
  given.insert(given.end(), rest.begin() + static_cast<std::ptrdiff_t>(road.joinsAt), rest.end());
  return given;
}

bool GoAllRoads(Stage& stage, const RoadOptions& options, Report& report, std::string& error) {
  const auto begun = Clock::now();
  RoadMap map;
  std::size_t cut = 0;
  if (!Explore(stage, options, map, cut, error)) return false;
  std::size_t runs = map.leaves.size();
  if (cut != 0 && options.cores > 1) {
    // Which roads are cut must not depend on who was faster.
    RoadOptions alone = options;
    alone.cores = 1;
    map = {};
    if (!Explore(stage, alone, map, cut, error)) return false;
    runs += map.leaves.size();
  }
  ReportBuilder builder(stage);
  RoadTeller teller(stage, map, builder);
  if (!teller.Tell(error)) return false;
  report = builder.Finish();
  report.isAllRoads = true;
  report.roadsCut = cut + teller.Cut();
  report.runs = runs + teller.Runs();
  report.cores = options.cores;
  report.seconds = std::chrono::duration<double>(Clock::now() - begun).count();
  return true;
}

}  // namespace varnok::rehearsal
