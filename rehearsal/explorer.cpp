#include "rehearsal/explorer.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>

#include "rehearsal/hash.h"
#include "rehearsal/run_once.h"

namespace varnok::rehearsal {
namespace {

constexpr std::uint64_t kImagesSalt = 0x696D616765730001;
/// Each decision on a road has a process that waits for its turn.
constexpr std::size_t kDeepest = 1000;
constexpr ProbeEnd kProbeEnds[] = {ProbeEnd::AsBoard, ProbeEnd::Other, ProbeEnd::Failing};

/// A process's turn has come: it may run in its parent's place, or beside others.
constexpr int kTurnSignal = SIGUSR1;
constexpr int kBesideSignal = SIGUSR2;

sigset_t TurnSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, kTurnSignal);
  sigaddset(&signals, kBesideSignal);
  return signals;
}

std::uint64_t TrafficHash(const std::vector<Exchange>& traffic) {
  std::uint64_t hash = traffic.size();
  for (const Exchange& exchange : traffic) {
    hash = Mixed(hash, exchange.netFunction * 256u + exchange.command);
    hash = Mixed(hash, HashOf(exchange.request));
    hash = Mixed(hash, HashOf(exchange.answer) + exchange.completionCode);
  }
  return hash;
}

}  // namespace

std::vector<std::string> AlternativesOf(const Inquiry& inquiry) {
  std::vector<std::string> answers;
  switch (inquiry.question.kind) {
    case QuestionKind::Menu:
      for (std::size_t i = 1; i <= inquiry.question.choices.size(); ++i) answers.push_back(std::to_string(i));
      break;
    case QuestionKind::Prompt:
    case QuestionKind::Header:
      return {"Y", "N"};
    case QuestionKind::Value:
      // A text of one character would be the end mark of a FRU area.
      if (inquiry.isChassisType) return {"11", "ZZ"};
      if (inquiry.longest < 2) return {""};
      return {std::string("REHEARSAL").substr(0, inquiry.longest), "X"};
    case QuestionKind::Probe:
      break;
  }
  return answers;
}

void Explorer::Go() {
  const sigset_t signals = TurnSignals();
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  Performance(stage_, *this, [this](Outcome& outcome) {
    LeaveLeaf(outcome);
    EndProcess();
  }).Play();
}

std::uint64_t Explorer::ImagesHash() {
  const std::uint64_t changes = stage_.Changes();
  if (imagesChanges_ == changes) return imagesHash_;
  imagesChanges_ = changes;
  imagesHash_ = 0;
  for (const Bytes& image : stage_.ImagesNow()) imagesHash_ = Mixed(imagesHash_, HashOf(image));
  return imagesHash_;
}

std::uint64_t Explorer::StateAt(Performance& run, const Question& question) {
  const std::size_t line = question.line == 0 ? std::numeric_limits<std::size_t>::max() - 1 : question.line;
  std::uint64_t state = Mixed(line, static_cast<std::uint64_t>(question.kind));
  state = Mixed(state, HashOf(question.text));
  for (const std::string& tag : run.Tags())
    if (stage_.TheScript().IsTagLive(tag, line)) state = Mixed(state, HashOf(tag));
  state = Mixed(Mixed(state, run.Deeds()), ImagesHash());
  // The faults of a board count requests.
  if (!stage_.TheBoard().Config().faults.empty()) state = Mixed(state, run.SoFar().run.traffic.size());
  return state;
}

void Explorer::Enter(Performance& run, const Question& question,
                     const std::vector<std::string>& alternatives) {
  state_ = StateAt(run, question);
  Trace trace{.state = state_, .question = question, .alternatives = alternatives};
  Run& soFar = trace.outcome.run;
  soFar.microseconds = run.Elapsed();
  soFar.stalled = run.SoFar().run.stalled;
  soFar.requests = run.SoFar().run.traffic.size();
  soFar.writes = run.SoFar().run.writes;
  const bool isNew = shared_.Enter(state_);
  if (!isNew) {
    trace.kind = TraceKind::Join;
    trace.path = path_;
    trace.outcome.tags.assign(run.TagsEver().begin(), run.TagsEver().end());
  }
  trace.outcome.lines.assign(run.Lines().begin(), run.Lines().end());
  results_.Add(ToWire(trace));
  if (!isNew) EndProcess();
}

/// True in the process that is to go on with what `rest` begins, once its turn has come.
bool Explorer::ForkRest(const Step& rest) {
  const pid_t self = getpid();
  const pid_t process = fork();
  if (process < 0) return false;
  if (process == 0) {
    children_.clear();
    AwaitTurn(self);
    return true;
  }
  children_.push_back({.process = process, .first = rest, .depth = path_.size()});
  if (shared_.TakeCore()) Wake(children_.back(), kBesideSignal);
  return false;
}

/// Should the parent die, its children's turn has come as well.
void Explorer::AwaitTurn(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, kTurnSignal);
  int signal = kTurnSignal;
  const sigset_t signals = TurnSignals();
  if (getppid() == parent) sigwait(&signals, &signal);
  if (shared_.IsAbandoned()) _exit(0);
  hasCore_ = signal == kBesideSignal;
}

void Explorer::Wake(Child& child, int signal) {
  child.isAwake = true;
  kill(child.process, signal);
}

std::size_t Explorer::Choose(Performance& run, const Question& question,
                             const std::vector<std::string>& alternatives) {
  Enter(run, question, alternatives);
  for (std::uint32_t i = 0;; ++i) {
    const std::size_t rest = alternatives.size() - 1 - i;
    const bool isTooDeep = rest != 0 && path_.size() >= kDeepest;
    if (isTooDeep) shared_.Cut(rest);
    const bool isRest = rest != 0 && !isTooDeep &&
                        ForkRest({.state = state_, .alternative = i + 1, .text = alternatives[i + 1]});
    if (!isRest) {
      path_.push_back({.state = state_, .alternative = i, .text = alternatives[i]});
      return i;
    }
    if (shared_.BeginRoad()) continue;
    shared_.Cut(rest);
    EndProcess();
  }
}

void Explorer::Reap(const Child& child) {
  int status = 0;
  while (waitpid(child.process, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  Trace trace{.kind = TraceKind::Death, .path = path_, .outcome = OutcomeOfDeath(stage_, status)};
  trace.path.resize(child.depth);
  trace.path.push_back(child.first);
  results_.Add(ToWire(trace));
}

void Explorer::LeaveLeaf(Outcome& outcome) {
  Trace trace{.kind = TraceKind::Leaf, .path = path_, .images = ImagesHash()};
  trace.traffic = TrafficHash(outcome.run.traffic);
  outcome.run.traffic.clear();
  if (!shared_.Enter(Mixed(trace.images, kImagesSalt))) outcome.images.clear();
  trace.outcome = std::move(outcome);
  results_.Add(ToWire(trace));
}

/// The alternatives that this process has left are gone now, the latest first, as if it had turned back
/// there.
void Explorer::EndProcess() {
  for (auto child = children_.rbegin(); child != children_.rend(); ++child) {
    if (child->isAwake) continue;
    const bool isBeside = shared_.TakeCore();
    Wake(*child, isBeside ? kBesideSignal : kTurnSignal);
    if (isBeside) continue;
    Reap(*child);
    child->process = 0;
  }
  if (hasCore_) shared_.GiveCore();
  for (const Child& child : children_)
    if (child.process != 0) Reap(child);
  _exit(0);
}

std::optional<std::string> Explorer::Answer(Performance& run, const Inquiry& inquiry) {
  const std::vector<std::string> answers = AlternativesOf(inquiry);
  return answers[Choose(run, inquiry.question, answers)];
}

ProbeEnd Explorer::ChooseProbeEnd(Performance& run, const Question& question) {
  std::vector<std::string> ends = {"as the board answers"};
  if (isProbing_) ends.insert(ends.end(), {"the other answer", "failing"});
  return kProbeEnds[Choose(run, question, ends)];
}

void Explorer::CannotFail(Performance&, const Question&) {
  shared_.DropRoad();
  EndProcess();
}

void Explorer::Learn(Performance&, const Given& given) {
  path_.back().text = given.text;
  path_.back().isInvalid = given.isInvalid;
}

void Explorer::Commit(Performance& run) {
  (void)Choose(run, {.text = "commit"}, {""});
}

}  // namespace varnok::rehearsal
