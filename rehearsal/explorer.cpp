#include "rehearsal/explorer.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "rehearsal/hash.h"
#include "rehearsal/run_once.h"

namespace varnok::rehearsal {
namespace {

constexpr std::uint64_t kImagesSalt = 0x696D616765730001;
constexpr ProbeEnd kProbeEnds[] = {ProbeEnd::AsBoard, ProbeEnd::Other, ProbeEnd::Failing};

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
    trace.outcome.lines.assign(run.Lines().begin(), run.Lines().end());
    trace.outcome.tags.assign(run.TagsEver().begin(), run.TagsEver().end());
  }
  results_.Add(ToWire(trace));
  if (!isNew) EndProcess();
}

/// True in the process that goes on with the step.
bool Explorer::Fork(const Step& step) {
  if (!shared_.BeginRoad()) return false;
  const bool isBeside = shared_.TakeCore();
  const Child child{.process = fork(), .step = step};
  if (child.process == 0) {
    children_.clear();
    hasCore_ = isBeside;
    return true;
  }
  if (child.process > 0 && isBeside) children_.push_back(child);
  if (child.process > 0 && !isBeside) Reap(child);
  if (child.process < 0) {
    if (isBeside) shared_.GiveCore();
    shared_.CutRoad();
  }
  return false;
}

std::size_t Explorer::Choose(Performance& run, const Question& question,
                             const std::vector<std::string>& alternatives) {
  Enter(run, question, alternatives);
  Step step{.state = state_};
  for (std::uint32_t i = 0;; ++i) {
    step.alternative = i;
    step.text = alternatives[i];
    if (i + 1 < alternatives.size() && !Fork(step)) continue;
    path_.push_back(step);
    return i;
  }
}

void Explorer::Reap(const Child& child) {
  int status = 0;
  while (waitpid(child.process, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  Trace trace{.kind = TraceKind::Death, .path = path_, .outcome = OutcomeOfDeath(stage_, status)};
  trace.path.push_back(child.step);
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

void Explorer::EndProcess() {
  if (hasCore_) shared_.GiveCore();
  for (const Child& child : children_) Reap(child);
  _exit(0);
}

std::optional<std::string> Explorer::Answer(Performance& run, const Inquiry& inquiry) {
  const std::vector<std::string> answers = AlternativesOf(inquiry);
  return answers[Choose(run, inquiry.question, answers)];
}

ProbeEnd Explorer::ChooseProbeEnd(Performance& run, const Question& question) {
  return kProbeEnds[Choose(run, question, {"as the board answers", "the other answer", "failing"})];
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
