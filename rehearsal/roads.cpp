#include "rehearsal/roads.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iterator>
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

/// What a road has come to at some place.
struct Sums {
  std::uint64_t microseconds = 0;
  std::uint64_t stalled = 0;
  std::size_t requests = 0;
  std::size_t writes = 0;
  std::set<std::size_t> lines{};

  void Add(const Run& run) {
    microseconds += run.microseconds;
    stalled += run.stalled;
    requests += run.requests;
    writes += run.writes;
  }
  void Subtract(const Run& run) {
    microseconds -= run.microseconds;
    stalled -= run.stalled;
    requests -= run.requests;
    writes -= run.writes;
  }
  void WriteTo(Run& run) const {
    run.microseconds = microseconds;
    run.stalled = stalled;
    run.requests = requests;
    run.writes = writes;
  }
};

/// Goes the map's ways in the order of the answers, and so tells the roads in the same order each time.
class RoadTeller {
 public:
  RoadTeller(Stage& stage, const RoadMap& map, ReportBuilder& builder)
      : stage_(stage), map_(map), builder_(builder) {
    for (const Trace& leaf : map.leaves)
      if (!leaf.outcome.images.empty()) images_.emplace(leaf.images, &leaf.outcome.images);
  }

  bool Tell(std::string& error) {
    for (const std::vector<Trace>* traces : {&map_.leaves, &map_.joins})
      for (const Trace& trace : *traces) builder_.MarkTags(trace.outcome.tags);
    bool isGood = Follow(*map_.start, {}, {}, error);
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
      // What follows may move the frames.
      const Sums sums = frame.sums;
      isGood = Follow(way, sums, frame.state->arrival, error);
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
    Sums sums;
  };
  struct First {
    std::size_t road;
    std::size_t answers;
    Sums sums;
  };

  Report& SoFar() { return builder_.SoFar(); }

  /// `sums` is what the road has come to in front of the way, `arrival` what whoever went the way had come to
  /// there: behind a state all come to the same.
  bool Follow(const Way& way, Sums sums, const Outcome& arrival, std::string& error) {
    if (way.isEnd) return TellEnd(map_.leaves[way.leaf], error);
    const State& state = map_.states.at(way.state);
    const Outcome& next = way.join ? map_.joins[*way.join].outcome : state.arrival;
    sums.Add(next.run);
    sums.Subtract(arrival.run);
    std::set_difference(next.lines.begin(), next.lines.end(), arrival.lines.begin(), arrival.lines.end(),
                        std::inserter(sums.lines, sums.lines.end()));
    const First here{.road = SoFar().roads.size(), .answers = answers_.size(), .sums = sums};
    const auto [first, isNew] = firsts_.try_emplace(way.state, here);
    if (!isNew) return TellJoin(first->second, sums);
    open_.push_back({&state, state.ways.begin(), answers_.size(), std::move(sums)});
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
    traffic_.push_back(isDeath ? 0 : traffic);
    return true;
  }

  bool TellJoin(const First& first, Sums sums) {
    Report& report = SoFar();
    if (first.road >= report.roads.size()) {
      ++cut_;
      return true;
    }
    const Road& other = report.roads[first.road];
    Road road{.answers = StepsOf(builder_, answers_),
              .run = other.run,
              .joins = first.road,
              .joinsAt = first.answers};
    road.run.transcript.clear();
    road.run.traffic.clear();
    sums.Add(other.run);
    Run before;
    first.sums.WriteTo(before);
    sums.Subtract(before);
    sums.WriteTo(road.run);
    for (const std::size_t line : other.lines)
      if (!first.sums.lines.contains(line)) sums.lines.insert(line);
    road.lines.assign(sums.lines.begin(), sums.lines.end());
    builder_.Add(std::move(road));
    traffic_.push_back(0);
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
  std::vector<std::uint64_t> traffic_;               ///< by road, a hash; 0: none
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
  // A road that joins another was run up to there.
  std::size_t runs = map.leaves.size() + map.joins.size();
  if (cut != 0 && options.cores > 1) {
    // Which roads are cut must not depend on who was faster.
    RoadOptions alone = options;
    alone.cores = 1;
    map = {};
    if (!Explore(stage, alone, map, cut, error)) return false;
    runs += map.leaves.size() + map.joins.size();
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
