// Who answers the questions of a run: a person, a file of answers, or the answers of an earlier run.
#pragma once

#include <set>
#include <span>
#include <string>
#include <vector>

#include "rehearsal/performance.h"

namespace varnok::rehearsal {

/// A person at the keyboard, or the characters of a pipe.
class KeyboardAnswers : public Answerer {
 public:
  std::optional<std::string> Answer(Performance&, const Inquiry&) override { return std::nullopt; }
};

/// The answers of an earlier run, in their order. A run that asks anything else ends with a problem.
class GivenAnswers : public Answerer {
 public:
  explicit GivenAnswers(std::vector<Given> given) : given_(std::move(given)) {}

  std::optional<std::string> Answer(Performance& run, const Inquiry& inquiry) override;
  ProbeEnd ChooseProbeEnd(Performance& run, const Question& question) override;

 private:
  const Given& Next(Performance& run, const Question& question);

  std::vector<Given> given_;
  std::size_t next_ = 0;
};

/// The answers of an earlier run, by their questions: for a run that may ask them in another order, leave
/// some out, or ask whether to go on where that one did not have to. That is answered with a yes.
class SameAnswers : public Answerer {
 public:
  /// `given` must outlive it.
  explicit SameAnswers(std::span<const Given> given) : given_(given) {}

  std::optional<std::string> Answer(Performance& run, const Inquiry& inquiry) override;
  ProbeEnd ChooseProbeEnd(Performance& run, const Question& question) override;

 private:
  const Given* Find(const Question& question);

  std::span<const Given> given_;
  std::set<const Given*> used_;
  const Given* last_ = nullptr;
};

/// The first answer to everything: a menu's first item, a yes, a text that fits.
class FirstAnswers : public Answerer {
 public:
  std::optional<std::string> Answer(Performance& run, const Inquiry& inquiry) override;

 private:
  std::optional<Question> last_;
};

/// A file of answers, one a line: QUESTION = ANSWER, where the question is its text, "line 12", or a default
/// for what is not named: "* prompt", "* menu", "* header", "* value", "*". docs/rehearsal.md describes it.
class AnswerFile : public Answerer {
 public:
  /// False, with `error` naming the line, for a text that is no such file.
  bool Parse(std::string_view text, std::string& error);

  std::optional<std::string> Answer(Performance& run, const Inquiry& inquiry) override;
  ProbeEnd ChooseProbeEnd(Performance& run, const Question& question) override;
  void End(Performance& run, Outcome& outcome) override;

  /// Another board may ask for what this one does not: what is left over is listed, and no problem.
  bool isForMany = false;

 private:
  struct Row {
    std::size_t place;  ///< in the file, from 1
    std::string key;
    std::string answer;
    bool isUsed = false;
  };

  bool ParseLine(std::string_view line, std::size_t place, std::string& error);
  Row* Find(const Question& question);
  Row* FindNamed(const std::string& key);
  Row* FindDefault(QuestionKind kind);

  std::vector<Row> rows_;
  std::optional<Question> last_;  ///< answered last, by a row that had been used before
};

/// The file that gives these answers again. What probes came to is left to the board.
std::string AnswerText(const std::vector<Given>& given);

}  // namespace varnok::rehearsal
