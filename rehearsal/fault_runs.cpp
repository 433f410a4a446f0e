#include "rehearsal/fault_runs.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string_view>

#include "boards/traffic.h"
#include "rehearsal/answers.h"
#include "rehearsal/disturbances.h"
#include "rehearsal/results.h"
#include "rehearsal/roads.h"
#include "rehearsal/run_once.h"
#include "rehearsal/ways_back.h"

namespace varnok::rehearsal {
namespace {

/// What a disturbed run leaves for the process that judges it.
struct Disturbed {
  FaultRun run{};
  Images images{};
};

template <class Archive>
void Transfer(Archive& archive, Disturbed& disturbed) {
  FaultRun& run = disturbed.run;
  archive(run.kind, run.request, run.name, run.exitStatus, run.message, run.errorOutput, run.isEndless,
          run.hasCrashed, run.output, run.isTold, disturbed.images);
}

/// A run that meets a fault takes longer than one that does not, by retries and time-outs, but not for ever.
Limits DisturbedLimits(const Run& undisturbed) {
  constexpr std::uint64_t kHours = 3600 * std::uint64_t{1'000'000};
  Limits limits;
  limits.requests = 20 * undisturbed.requests + 20'000;
  limits.questions = 1'000;
  limits.microseconds = 20 * undisturbed.microseconds + 12 * kHours;
  limits.processorSeconds = 20;
  return limits;
}

/// A line may come again once it was shown; apart from that the lines are to be the same.
FaultOutput Compare(std::string_view undisturbed, std::string_view disturbed) {
  if (disturbed == undisturbed) return FaultOutput::Same;
  std::set<std::string_view> shown;
  std::size_t next = 0;
  const auto lineAt = [](std::string_view text, std::size_t begin) {
    return text.substr(begin, std::min(text.find('\n', begin), text.size()) + 1 - begin);
  };
  for (std::size_t at = 0; at < disturbed.size();) {
    const std::string_view line = lineAt(disturbed, at);
    at += line.size();
    if (next < undisturbed.size() && line == lineAt(undisturbed, next)) {
      next += line.size();
      shown.insert(line);
    } else if (!shown.contains(line)) {
      return FaultOutput::Other;
    }
  }
  return next == undisturbed.size() ? FaultOutput::Repeats : FaultOutput::Other;
}

/// Runs the road, and forks the disturbed runs from it.
class Trunk : public Performance {
 public:
  Trunk(Stage& stage, Answerer& answerer, const Outcome& undisturbed, const FaultChoice& choice,
        Results& results)
      : Performance(
            stage, answerer, [this](Outcome& outcome) { End(outcome); }, DisturbedLimits(undisturbed.run)),
        undisturbed_(undisturbed),
        choice_(choice),
        results_(results) {}

  void Asked(const sim::BusPlace& place, const sim::Request& request) override {
    Performance::Asked(place, request);
    if (disturbance_ != nullptr) return;
    ++request_;
    name_ = boards::CommandName(request.netFunction, request.command);
    for (const Disturbance& disturbance : AllDisturbances()) {
      if (!IsWithin(disturbance.scope, place, request)) continue;
      if (pairs_++ % choice_.step != 0 || !Fork(disturbance)) continue;
      TheStage().TheBoard().TheBmc().Faults().Add(RuleFor(disturbance, place, request));
      return;
    }
  }

 private:
  /// True in the new process.
  bool Fork(const Disturbance& disturbance) {
    while (children_.size() >= choice_.cores) WaitForOne();
    const pid_t child = fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      children_.clear();
      disturbance_ = &disturbance;
      return true;
    }
    // Without a process this disturbance cannot be tried, which must not pass for a good end.
    if (child < 0)
      Report({.kind = disturbance.name,
              .request = request_,
              .name = name_,
              .message = "no process for the run"});
    if (child > 0) children_.emplace(child, &disturbance);
    return false;
  }

  void WaitForOne() {
    int status = 0;
    const pid_t child = waitpid(-1, &status, 0);
    if (child < 0 && errno == EINTR) return;
    const auto found = children_.find(child);
    if (found == children_.end()) return children_.clear();
    if (status != 0) {
      const Outcome dead = OutcomeOfDeath(TheStage(), status);
      Report({.kind = found->second->name,
              .request = request_,
              .name = name_,
              .exitStatus = dead.run.exitStatus,
              .message = dead.run.message,
              .isEndless = dead.isEndless,
              .hasCrashed = !dead.isEndless,
              .output = FaultOutput::Other});
    }
    children_.erase(found);
  }

  void Report(FaultRun run, Images images = {}) {
    Disturbed disturbed{std::move(run), std::move(images)};
    results_.Add(ToWire(disturbed));
  }

  void End(Outcome& outcome) {
    while (!children_.empty()) WaitForOne();
    const Run& run = outcome.run;
    if (disturbance_ == nullptr) {
      // A trunk that came to another end has not met every request.
      if (run.exitStatus != undisturbed_.run.exitStatus || run.message != undisturbed_.run.message) _exit(1);
      return;
    }
    std::string message = run.message;
    for (const std::string& problem : outcome.problems) message += (message.empty() ? "" : "; ") + problem;
    Report({.kind = disturbance_->name,
            .request = request_,
            .name = name_,
            .exitStatus = run.exitStatus,
            .message = std::move(message),
            .errorOutput = run.errorOutput,
            .isEndless = outcome.isEndless,
            .output = Compare(undisturbed_.run.transcript, run.transcript),
            .isTold = run.errorOutput != undisturbed_.run.errorOutput},
           std::move(outcome.images));
  }

  const Outcome& undisturbed_;
  const FaultChoice& choice_;
  Results& results_;
  const Disturbance* disturbance_ = nullptr;  ///< in a process that has one
  std::size_t request_ = 0;
  std::string name_;  ///< of the request
  std::size_t pairs_ = 0;
  std::map<pid_t, const Disturbance*> children_;
};

/// Takes what has come, and counts what has to be judged: each board once.
class Collector {
 public:
  Collector(Stage& stage, const Outcome& undisturbed, std::vector<FaultRun>& runs)
      : stage_(stage), undisturbed_(undisturbed), runs_(runs), first_(runs.size()) {}

  void Take(Results& results) {
    results.Take([this](std::span<const std::uint8_t> record) {
      Disturbed disturbed;
      if (FromWire(record, disturbed)) Add(std::move(disturbed));
    });
  }
  std::size_t Count() const { return runs_.size() - first_; }

  /// Judges the boards and says of each run what came of its own.
  bool Judge(const FaultChoice& choice, std::string& error) {
    std::vector<WayBack> ways;
    if (!FindWaysBack(stage_, undisturbed_, boards_.Distinct(), choice.cores, ways, error)) return false;
    for (std::size_t i = 0; i < Count(); ++i) {
      const WayBack& way = ways[boardOf_[i]];
      FaultRun& run = runs_[first_ + i];
      run.canBeShown = way.canBeShown;
      run.rerunReaches = way.rerunReaches;
      run.restoreReaches = way.restoreReaches;
    }
    // By request, and in the disturbances' order: what ended first is chance.
    const auto rankOf = [](const FaultRun& run) {
      const auto all = AllDisturbances();
      return std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == run.kind; });
    };
    std::stable_sort(runs_.begin() + static_cast<std::ptrdiff_t>(first_), runs_.end(),
                     [&](const FaultRun& left, const FaultRun& right) {
                       if (left.request != right.request) return left.request < right.request;
                       return rankOf(left) < rankOf(right);
                     });
    return true;
  }

 private:
  void Add(Disturbed disturbed) {
    // A run that died leaves no board to look at; the one before stands for it.
    if (disturbed.images.empty()) disturbed.images = stage_.Before();
    FaultRun& run = disturbed.run;
    run.outcome = stage_.AreAlike(disturbed.images, undisturbed_.images) ? FaultOutcome::Wanted
                  : stage_.AreAlike(disturbed.images, stage_.Before())   ? FaultOutcome::Old
                                                                         : FaultOutcome::Between;
    boardOf_.push_back(boards_.Add(std::move(disturbed.images)));
    runs_.push_back(std::move(run));
  }

  Stage& stage_;
  const Outcome& undisturbed_;
  std::vector<FaultRun>& runs_;
  std::size_t first_;
  DistinctImages boards_;
  std::vector<std::size_t> boardOf_;  ///< of each run
};

/// Disturbs the road that `undisturbed` is, and adds what each run came to.
bool DisturbRoad(Stage& stage, const Outcome& undisturbed, const FaultChoice& choice,
                 std::vector<FaultRun>& runs, std::string& error) {
  Results results;
  if (!results.Open(error)) return false;
  std::fflush(nullptr);
  const pid_t trunk = fork();
  if (trunk < 0) {
    error = std::string("no process for the program: ") + std::strerror(errno);
    return false;
  }
  if (trunk == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    SameAnswers answers(undisturbed.given);
    Trunk(stage, answers, undisturbed, choice, results).Play();
  }
  Collector collector(stage, undisturbed, runs);
  constexpr useconds_t kPause = 50'000;
  int status = 0;
  for (pid_t ended = 0; (ended = waitpid(trunk, &status, WNOHANG)) == 0 || (ended < 0 && errno == EINTR);) {
    usleep(kPause);
    collector.Take(results);
    choice.progress(runs.size());
  }
  collector.Take(results);
  if (status != 0) {
    error = "the road cannot be disturbed: " + OutcomeOfDeath(stage, status).run.message;
    return false;
  }
  return collector.Judge(choice, error);
}

}  // namespace

bool DisturbRoads(Stage& stage, const FaultChoice& choice, Report& report, std::string& error) {
  const auto begun = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    if (report.roads[i].run.traffic.empty()) continue;
    GivenAnswers answers(AnswersOf(report, i));
    Outcome undisturbed;
    const std::size_t first = report.faults.size();
    if (!RunOnce(stage, answers, undisturbed, error) ||
        !DisturbRoad(stage, undisturbed, choice, report.faults, error))
      return false;
    for (std::size_t run = first; run < report.faults.size(); ++run) report.faults[run].road = i;
  }
  report.hasFaults = true;
  report.faultStep = choice.step;
  report.runs += report.faults.size();
  report.cores = choice.cores;
  report.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
  return true;
}

}  // namespace varnok::rehearsal
