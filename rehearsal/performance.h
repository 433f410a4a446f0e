// One run of the program over a board in memory, in a process that was forked for it and ends with it. It is
// the machine that the program runs on, it hears what the script engine does, and it hears the traffic.
//
//   pid_t child = fork();
//   if (child == 0) Performance(stage, answerer, [&](Outcome& outcome) { results.Add(ToWire(outcome));
//   }).Play();
#pragma once

#include <deque>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "cfg/script_watcher.h"
#include "firmware/host/host_firmware.h"
#include "rehearsal/stage.h"
#include "sim/traffic_log.h"

namespace varnok::rehearsal {

/// A question with what an answer to it must be.
struct Inquiry {
  Question question{};
  std::size_t longest = 0;     ///< characters that can be typed
  bool isChassisType = false;  ///< the value is a hexadecimal number from 01 to 1D
};

/// A question and what was answered.
struct Given {
  Question question{};
  std::string text{};
  bool isInvalid = false;  ///< the program asked again
  bool isForced = false;  ///< a probe that did not end as the board answers: no part of the question's answer

  bool operator==(const Given& other) const {
    return question == other.question && text == other.text && isInvalid == other.isInvalid;
  }
};

/// What one run left behind.
struct Outcome {
  Run run{};
  std::vector<Given> given{};
  std::vector<std::size_t> lines{};  ///< of the script that took effect, from 1
  std::vector<std::string> tags{};   ///< that were set at any time, in capitals
  Images images{};
  std::vector<std::string> problems{};       ///< why this was not the run that was asked for
  bool isGivenUp = false;                    ///< ended for the first of them
  std::vector<std::size_t> unusedAnswers{};  ///< lines of the file of answers, from 1
  bool isEndless = false;                    ///< stopped: it asked, sent or waited without end
  bool hasLostPower = false;
};

template <class Archive>
void Transfer(Archive& archive, Question& question) {
  archive(question.kind, question.text, question.line, question.choices);
}
template <class Archive>
void Transfer(Archive& archive, Given& given) {
  archive(given.question, given.text, given.isInvalid, given.isForced);
}
template <class Archive>
void Transfer(Archive& archive, Exchange& exchange) {
  archive(exchange.begun, exchange.ended, exchange.controller, exchange.channel, exchange.netFunction,
          exchange.command, exchange.name, exchange.request, exchange.isAnswered, exchange.completionCode,
          exchange.answer, exchange.isWrite);
}
template <class Archive>
void Transfer(Archive& archive, Run& run) {
  archive(run.exitStatus, run.message, run.transcript, run.errorOutput, run.traffic, run.requests, run.writes,
          run.microseconds, run.stalled, run.board);
}
template <class Archive>
void Transfer(Archive& archive, Outcome& outcome) {
  archive(outcome.run, outcome.given, outcome.lines, outcome.tags, outcome.images, outcome.problems,
          outcome.isGivenUp, outcome.unusedAnswers, outcome.isEndless, outcome.hasLostPower);
}

/// How a probe ends.
enum class ProbeEnd : std::uint8_t {
  AsBoard,  ///< as the board answers
  Other,    ///< no in place of yes, yes in place of anything else
  Yes,
  No,
  Failing,  ///< nothing answers while it asks
};

class Performance;

/// Who answers what a run asks. Each operation may fork: it then returns in every process that goes on.
class Answerer {
 public:
  virtual ~Answerer() = default;
  /// The answer to a question; nothing when a person at the keyboard is to answer it.
  virtual std::optional<std::string> Answer(Performance& run, const Inquiry& inquiry) = 0;
  virtual ProbeEnd ChooseProbeEnd(Performance&, const Question&) { return ProbeEnd::AsBoard; }
  /// A probe that was to fail has asked nothing that could.
  virtual void CannotFail(Performance& run, const Question& question);
  /// What a question or a probe came to.
  virtual void Learn(Performance&, const Given&) {}
  virtual void Commit(Performance&) {}
  virtual void End(Performance&, Outcome&) {}
};

/// When a run is taken for endless.
struct Limits {
  std::size_t requests = 200'000;
  std::size_t questions = 100'000;
  std::uint64_t microseconds = 24 * 3600 * std::uint64_t{1'000'000};
  unsigned processorSeconds = 60;  ///< then the system ends the process
};

class Performance : public host::HostFirmware, public ScriptWatcher, public sim::TrafficObserver {
 public:
  /// Everything must outlive the process. `end` gets the outcome as the last thing.
  Performance(Stage& stage, Answerer& answerer, std::function<void(Outcome&)> end, const Limits& limits = {});

  /// Shows the console as it goes, and takes keys from the keyboard where nobody else answers.
  bool isLive = false;

  /// Runs the program, hands over the outcome and ends the process.
  [[noreturn]] void Play();
  /// Ends the run here, whatever the program would do.
  [[noreturn]] void Finish(int status);
  /// Ends it for a reason that is not the program's.
  [[noreturn]] void GiveUp(std::string problem);

  Stage& TheStage() { return stage_; }
  /// So far; the images, lines and tags are filled in at the end.
  Outcome& SoFar() { return outcome_; }
  const std::set<std::string>& Tags() const { return tags_; }
  /// Those that were set at any time.
  const std::set<std::string>& TagsEver() const { return tagsEver_; }
  const std::set<std::size_t>& Lines() const { return lines_; }
  /// What the commands so far have done that is neither a tag nor on the board: which of them ran, with the
  /// values that were typed.
  std::uint64_t Deeds() const { return deeds_; }
  std::uint64_t Elapsed();

  // The machine.
  void WriteConsole(std::u16string_view text) override;
  void WriteErrorOutput(std::u16string_view text) override;
  char16_t ReadKey() override;
  void Stall(std::uint64_t microseconds, StallKind kind) override;
  Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) override;
  Status AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) override;
  Status MakeFolder(std::u16string_view) override { return uefi_status::kWriteProtected; }

  // The script engine.
  void Runs(const CCfgCommand& command) override;
  void Reaches(std::uint32_t line) override { lines_.insert(line + 1); }
  void Asks(const ScriptQuestion& question) override;
  void IsAnswered(std::u16string_view text) override;
  void SetsTag(std::string_view name) override;
  void ClearsTag(std::string_view name) override;
  void Probes(const CCfgCommand& probe) override;
  void IsProbed(Status& status, bool& isFound) override;
  void Commits() override;

  // The traffic.
  void Asked(const sim::BusPlace& place, const sim::Request& request) override;
  void Answered(const sim::BusPlace& place, const sim::Response& response) override;
  void Unanswered(const sim::BusPlace& place) override;
  void PowerIsCut() override;

 private:
  void Type(std::string_view text);
  void Settle(bool isRefused);
  void Learn(Given given);
  void CheckLimits();
  Exchange* Close(const sim::BusPlace& place);
  std::string LastMessage() const;

  Stage& stage_;
  Answerer& answerer_;
  std::function<void(Outcome&)> end_;
  Limits limits_;
  Outcome outcome_;
  std::u16string transcript_;
  std::u16string errorOutput_;
  std::set<std::size_t> lines_;
  std::set<std::string> tags_;
  std::set<std::string> tagsEver_;
  std::uint64_t deeds_ = 0;
  std::deque<char16_t> keys_;
  std::optional<Question> pending_;  ///< asked, and not answered yet
  std::optional<Given> unsettled_;   ///< answered, and not known yet to be taken
  bool isByHand_ = false;            ///< a person answers
  bool isValueCheck_ = false;        ///< the next key says whether the value is right
  std::size_t questions_ = 0;
  Question probe_;
  ProbeEnd probeEnd_ = ProbeEnd::AsBoard;
  std::size_t requestsBeforeProbe_ = 0;
  std::size_t silence_ = 0;        ///< the rule that makes a probe fail
  std::vector<std::size_t> open_;  ///< exchanges under way, a bridged one within its carrier
  std::vector<std::uint64_t> changesBefore_;
};

}  // namespace varnok::rehearsal
