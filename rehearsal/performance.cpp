#include "rehearsal/performance.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "boards/check/file_text.h"
#include "boards/traffic.h"
#include "cfg/cfg_command.h"
#include "cfg/probe.h"
#include "firmware/entry.h"
#include "firmware/host/argument_list.h"
#include "firmware/host/keyboard.h"
#include "firmware/host/utf8.h"
#include "rehearsal/can_write.h"
#include "rehearsal/hash.h"
#include "sim/fault_kinds.h"

namespace varnok::rehearsal {
namespace {

/// Commands that leave tags and nothing else.
constexpr std::string_view kWithoutDeed[] = {"IFSET",   "ELSE",          "SET",  "CLEAR",
                                             "DISPLAY", "PROMPT",        "MENU", "MENUTITLE",
                                             "PROBE",   "CONFIGURATION", "BOOT", "ERRORLEVEL"};

QuestionKind KindOf(ScriptQuestionKind kind) {
  switch (kind) {
    case ScriptQuestionKind::Menu:
      return QuestionKind::Menu;
    case ScriptQuestionKind::YesOrNo:
      return QuestionKind::Prompt;
    case ScriptQuestionKind::WholeFile:
      return QuestionKind::Header;
    case ScriptQuestionKind::Value:
    case ScriptQuestionKind::IsCorrect:
      break;
  }
  return QuestionKind::Value;
}

/// What a person would call the question, and the answers file calls it.
std::string TextOf(const ScriptQuestion& question) {
  const std::string text = host::Utf8FromLatin1(std::string(question.text));
  if (question.kind == ScriptQuestionKind::WholeFile) return "header of " + text;
  return text.empty() ? "menu" : text;
}

/// What a console shows in the end: a carriage return and a backspace let later text take the place of
/// earlier.
std::u16string Shown(std::u16string_view written) {
  std::u16string shown, line;
  std::size_t column = 0;
  for (char16_t each : written) {
    if (each == u'\n') {
      shown += line + u'\n';
      line.clear();
    }
    if (each == u'\n' || each == u'\r') {
      column = 0;
    } else if (each == u'\b') {
      column -= column == 0 ? 0 : 1;
    } else {
      line.resize(std::max(line.size(), column + 1), u' ');
      line[column++] = each;
    }
  }
  return shown + line;
}

/// Takes everything: the folder of the package stays as it is.
class Sink : public File {
 public:
  Status Read(std::span<std::uint8_t>, std::size_t& count) override {
    count = 0;
    return kSuccess;
  }
  Status Write(std::span<const std::uint8_t>) override { return kSuccess; }
};

/// No answer to any request.
sim::FaultRule Silence() {
  sim::FaultRule rule;
  rule.label = "the rehearsal's silence";
  rule.kind = sim::FindFaultKind("no-answer");
  rule.executed = false;
  return rule;
}

}  // namespace

void Answerer::CannotFail(Performance& run, const Question& question) {
  run.GiveUp("line " + std::to_string(question.line) + ": " + question.text +
             " asks nothing that could fail");
}

Performance::Performance(Stage& stage, Answerer& answerer, std::function<void(Outcome&)> end,
                         const Limits& limits)
    : HostFirmware(stage.TheBoard()),
      stage_(stage),
      answerer_(answerer),
      end_(std::move(end)),
      limits_(limits) {}

void Performance::Play() {
  const rlimit time{limits_.processorSeconds, limits_.processorSeconds};
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CPU, &time);
  setrlimit(RLIMIT_CORE, &none);
  InstallFirmware(this);
  theScriptWatcher = this;
  stage_.TheBoard().TheBmc().Log().Observe(this);
  host::ArgumentList arguments(host::Latin1FromUtf8(stage_.Arguments()));
  const int status = Main(arguments.Count(), arguments.Pointers());
  Finish(status >= 0 && status <= host::kLargestStatus ? status : host::kLargestStatus);
}

void Performance::Finish(int status) {
  stage_.TheBoard().TheBmc().Log().Observe(nullptr);
  Settle(false);
  // What was on its way reaches a board that keeps its power.
  if (!outcome_.hasLostPower) stage_.TheBoard().Images().Settle(sim::StorageFault::kNever - 1);
  outcome_.run.exitStatus = status;
  outcome_.run.transcript = host::ToUtf8(Shown(transcript_));
  outcome_.run.errorOutput = host::ToUtf8(errorOutput_);
  if (status != 0) outcome_.run.message = outcome_.isEndless ? "it does not end" : LastMessage();
  outcome_.run.requests = outcome_.run.traffic.size();
  outcome_.run.microseconds = Elapsed();
  outcome_.lines.assign(lines_.begin(), lines_.end());
  outcome_.tags.assign(tagsEver_.begin(), tagsEver_.end());
  outcome_.images = stage_.ImagesNow();
  answerer_.End(*this, outcome_);
  end_(outcome_);
  // A terminal that was read from is put back at the end.
  if (isLive) std::exit(0);
  _exit(0);
}

void Performance::GiveUp(std::string problem) {
  outcome_.problems.push_back(std::move(problem));
  outcome_.isGivenUp = true;
  Finish(host::kLargestStatus);
}

std::uint64_t Performance::Elapsed() {
  return stage_.TheBoard().Clock().Elapsed();
}

/// What the last line that begins with "ERROR:" says, with the lines that belong to it.
std::string Performance::LastMessage() const {
  constexpr std::u16string_view kMark = u"\nERROR:";
  const std::size_t at = transcript_.rfind(kMark);
  if (at == std::u16string::npos) return {};
  const std::size_t start = at + kMark.size();
  const std::u16string text = transcript_.substr(start, transcript_.find(u"\n\n", start) - start);
  std::string line;
  for (char each : host::ToUtf8(text)) {
    const bool isBlank = each == '\n' || each == '\r' || each == ' ' || each == '\t';
    if (!isBlank)
      line += each;
    else if (!line.empty() && line.back() != ' ')
      line += ' ';
  }
  if (line.ends_with(' ')) line.pop_back();
  return line;
}

// --- The machine ---

void Performance::WriteConsole(std::u16string_view text) {
  transcript_ += text;
  if (isLive) HostFirmware::WriteConsole(text);
}

void Performance::WriteErrorOutput(std::u16string_view text) {
  errorOutput_ += text;
  if (isLive) HostFirmware::WriteErrorOutput(text);
}

char16_t Performance::ReadKey() {
  if (!keys_.empty()) {
    const char16_t key = keys_.front();
    keys_.pop_front();
    return key;
  }
  if (isLive) {
    if (const std::optional<char16_t> key = host::ReadKey()) return *key;
    GiveUp("the input ended while the program waited for a key");
  }
  GiveUp(pending_ ? "the program does not take the answer to \"" + pending_->text + "\""
                  : "the program waits for a key that no question is known for");
}

void Performance::Stall(std::uint64_t microseconds, StallKind kind) {
  outcome_.run.stalled += microseconds;
  HostFirmware::Stall(microseconds, kind);
  CheckLimits();
}

Status Performance::OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  if (mode == FileMode::Read) return HostFirmware::OpenFile(path, mode, file);
  file = std::make_unique<Sink>();
  return kSuccess;
}

Status Performance::AppendToFile(std::u16string_view, std::span<const std::uint8_t>) {
  return kSuccess;
}

void Performance::CheckLimits() {
  if (outcome_.run.traffic.size() <= limits_.requests && Elapsed() <= limits_.microseconds &&
      questions_ <= limits_.questions)
    return;
  outcome_.isEndless = true;
  Finish(host::kLargestStatus);
}

// --- The script engine ---

void Performance::Runs(const CCfgCommand& command) {
  Settle(false);
  lines_.insert(command.Line() + 1);
  const std::string keyword = boards::Capitals(command.Keyword());
  const bool isDeed =
      std::find(std::begin(kWithoutDeed), std::end(kWithoutDeed), keyword) == std::end(kWithoutDeed);
  if (isDeed) deeds_ = Mixed(deeds_, command.Line() + 1);
}

void Performance::Type(std::string_view text) {
  for (char16_t key : host::FromUtf8(text)) keys_.push_back(key);
}

void Performance::Asks(const ScriptQuestion& question) {
  keys_.clear();
  isValueCheck_ = question.kind == ScriptQuestionKind::IsCorrect;
  if (isValueCheck_) {
    if (!isByHand_) Type("Y");
    return;
  }
  Inquiry inquiry{
      .question = {.kind = KindOf(question.kind), .text = TextOf(question), .line = question.line + 1},
      .longest = question.longest,
      .isChassisType = question.isChassisType};
  for (std::string_view item : question.items)
    inquiry.question.choices.push_back(host::Utf8FromLatin1(std::string(item)));
  Settle(unsettled_ && unsettled_->question == inquiry.question);
  ++questions_;
  CheckLimits();
  pending_ = inquiry.question;
  const std::optional<std::string> answer = answerer_.Answer(*this, inquiry);
  isByHand_ = !answer;
  if (isByHand_) return;
  Type(*answer);
  if (question.kind == ScriptQuestionKind::Menu || question.kind == ScriptQuestionKind::Value) Type("\r");
}

void Performance::IsAnswered(std::u16string_view text) {
  if (isValueCheck_) {
    isValueCheck_ = false;
    if (text == u"N" || text == u"n") unsettled_.reset();
    return Settle(false);
  }
  if (!pending_) return;
  const bool isKey = pending_->kind == QuestionKind::Prompt || pending_->kind == QuestionKind::Header;
  const std::string answer = host::ToUtf8(text);
  unsettled_ = Given{.question = *pending_, .text = isKey ? boards::Capitals(answer) : answer};
  pending_.reset();
}

void Performance::Settle(bool isRefused) {
  if (!unsettled_) return;
  unsettled_->isInvalid = isRefused;
  const QuestionKind kind = unsettled_->question.kind;
  const bool isDeed = !isRefused && (kind == QuestionKind::Value || kind == QuestionKind::Header);
  if (isDeed) deeds_ = Mixed(deeds_, HashOf(unsettled_->text));
  Learn(*std::exchange(unsettled_, std::nullopt));
}

void Performance::Learn(Given given) {
  answerer_.Learn(*this, given);
  outcome_.given.push_back(std::move(given));
}

void Performance::SetsTag(std::string_view name) {
  const std::string tag = boards::Capitals(name);
  tags_.insert(tag);
  tagsEver_.insert(tag);
}

void Performance::ClearsTag(std::string_view name) {
  tags_.erase(boards::Capitals(name));
}

void Performance::Probes(const CCfgCommand& probe) {
  Settle(false);
  const std::string parameters = host::Utf8FromLatin1(std::string(probe.Parameters()));
  probe_ = {.kind = QuestionKind::Probe, .text = "PROBE " + parameters, .line = probe.Line() + 1};
  ++questions_;
  CheckLimits();
  requestsBeforeProbe_ = outcome_.run.traffic.size();
  probeEnd_ = answerer_.ChooseProbeEnd(*this, probe_);
  if (probeEnd_ == ProbeEnd::Failing) silence_ = stage_.TheBoard().TheBmc().Faults().Add(Silence());
}

void Performance::IsProbed(Status& status, bool& isFound) {
  const bool hasAsked = outcome_.run.traffic.size() > requestsBeforeProbe_;
  if (probeEnd_ == ProbeEnd::Failing) stage_.TheBoard().TheBmc().Faults().Stop(silence_);
  if (probeEnd_ == ProbeEnd::Failing && !hasAsked) answerer_.CannotFail(*this, probe_);
  const bool isYes = status == kSuccess && isFound;
  bool isForced = probeEnd_ == ProbeEnd::Failing;
  if (probeEnd_ != ProbeEnd::AsBoard && probeEnd_ != ProbeEnd::Failing) {
    isFound = probeEnd_ == ProbeEnd::Yes || (probeEnd_ == ProbeEnd::Other && !isYes);
    isForced = isFound != isYes || status != kSuccess;
    status = kSuccess;
  }
  const bool hasFailed = status != kSuccess || probeEnd_ == ProbeEnd::Failing;
  Learn({.question = probe_, .text = hasFailed ? "failing" : isFound ? "yes" : "no", .isForced = isForced});
}

void Performance::Commits() {
  Settle(false);
  answerer_.Commit(*this);
}

// --- The traffic ---

void Performance::Asked(const sim::BusPlace& place, const sim::Request& request) {
  CheckLimits();
  open_.push_back(outcome_.run.traffic.size());
  changesBefore_.push_back(stage_.Changes());
  outcome_.run.traffic.push_back({.begun = Elapsed(),
                                  .ended = Elapsed(),
                                  .controller = place.address,
                                  .channel = place.channel,
                                  .netFunction = request.netFunction,
                                  .command = request.command,
                                  .name = boards::CommandName(request.netFunction, request.command),
                                  .request = request.data,
                                  .isWrite = CanWrite(request.netFunction, request.command, request.data)});
}

/// The exchange with this controller that is under way; null when its answer has been seen.
Exchange* Performance::Close(const sim::BusPlace& place) {
  if (open_.empty()) return nullptr;
  Exchange& exchange = outcome_.run.traffic[open_.back()];
  if (exchange.controller != place.address || exchange.channel != place.channel) return nullptr;
  if (exchange.isWrite && stage_.Changes() != changesBefore_.back()) ++outcome_.run.writes;
  open_.pop_back();
  changesBefore_.pop_back();
  exchange.ended = Elapsed();
  return &exchange;
}

void Performance::Answered(const sim::BusPlace& place, const sim::Response& response) {
  Exchange* exchange = Close(place);
  if (exchange == nullptr) return;
  exchange->completionCode = response.completionCode;
  exchange->answer = response.data;
}

void Performance::Unanswered(const sim::BusPlace& place) {
  if (Exchange* exchange = Close(place)) exchange->isAnswered = false;
}

void Performance::PowerIsCut() {
  outcome_.hasLostPower = true;
  while (!open_.empty()) {
    outcome_.run.traffic[open_.back()].isAnswered = false;
    open_.pop_back();
  }
  Finish(sim::kPowerCutStatus);
}

}  // namespace varnok::rehearsal
