#include "rehearsal/answers.h"

#include <algorithm>

#include "boards/check/file_text.h"
#include "rehearsal/explorer.h"

namespace varnok::rehearsal {
namespace {

using boards::Capitals;

constexpr std::string_view kBlanks = " \t\r";

/// A word of the file for each kind of question.
constexpr std::string_view kKindWords[] = {"MENU", "PROMPT", "HEADER", "VALUE", "PROBE"};

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// A question as it is compared: capitals, one blank between words.
std::string Key(std::string_view text) {
  std::string key;
  for (char each : Trimmed(text)) {
    const bool isBlank = kBlanks.find(each) != std::string_view::npos;
    if (!isBlank || key.back() != ' ') key += isBlank ? ' ' : each;
  }
  return Capitals(key);
}

std::string Place(const Question& question) {
  return "line " + std::to_string(question.line) + ": ";
}

/// Takes a text off the front: in double quotes, or up to `end`.
std::string_view TakeText(std::string_view& rest, std::string_view end) {
  rest = Trimmed(rest);
  if (rest.starts_with('"')) {
    const std::size_t close = rest.find('"', 1);
    if (close != std::string_view::npos) {
      const std::string_view text = rest.substr(1, close - 1);
      rest.remove_prefix(close + 1);
      return text;
    }
  }
  const std::size_t stop = end.empty() ? rest.size() : std::min(rest.find(end), rest.size());
  const std::string_view text = Trimmed(rest.substr(0, stop));
  rest.remove_prefix(stop);
  return text;
}

/// The number of the item that is named by its number or its text; nothing for another answer.
std::optional<std::string> MenuNumber(const Question& menu, const std::string& answer) {
  for (std::size_t i = 0; i < menu.choices.size(); ++i)
    if (Key(menu.choices[i]) == Key(answer) || std::to_string(i + 1) == answer) return std::to_string(i + 1);
  return std::nullopt;
}

/// What is typed for an answer; nothing, when it is none to that question.
std::optional<std::string> Typed(const Question& question, const std::string& answer) {
  switch (question.kind) {
    case QuestionKind::Menu:
      return MenuNumber(question, answer);
    case QuestionKind::Prompt:
    case QuestionKind::Header: {
      const std::string key = Key(answer);
      if (key == "Y" || key == "YES") return "Y";
      if (key == "N" || key == "NO") return "N";
      return std::nullopt;
    }
    default:
      return answer;
  }
}

std::optional<ProbeEnd> ProbeEndOf(const std::string& answer) {
  const std::string key = Key(answer);
  if (key == "YES" || key == "Y") return ProbeEnd::Yes;
  if (key == "NO" || key == "N") return ProbeEnd::No;
  if (key == "FAILING") return ProbeEnd::Failing;
  return std::nullopt;
}

std::string Quoted(const std::string& text) {
  const bool isPlain = !text.empty() && Trimmed(text) == text && text.find('=') == std::string::npos &&
                       text.find_first_of("\"*#") != 0 && Capitals(text).find("LINE ") != 0;
  return isPlain ? text : '"' + text + '"';
}

}  // namespace

// --- An earlier run ---

const Given& GivenAnswers::Next(Performance& run, const Question& question) {
  if (next_ == given_.size()) run.GiveUp(Place(question) + "\"" + question.text + "\" was not asked before");
  const Given& given = given_[next_++];
  if (!(given.question == question))
    run.GiveUp(Place(question) + "\"" + question.text + "\" is asked where \"" + given.question.text +
               "\" was");
  return given;
}

std::optional<std::string> GivenAnswers::Answer(Performance& run, const Inquiry& inquiry) {
  return Next(run, inquiry.question).text;
}

ProbeEnd GivenAnswers::ChooseProbeEnd(Performance& run, const Question& question) {
  return ProbeEndOf(Next(run, question).text).value_or(ProbeEnd::AsBoard);
}

/// The first of its answers that was not given yet; else the last one.
const Given* SameAnswers::Find(const Question& question) {
  const Given* found = nullptr;
  for (const Given& each : given_) {
    if (!(each.question == question)) continue;
    found = &each;
    if (!used_.contains(found)) break;
  }
  return found;
}

std::optional<std::string> SameAnswers::Answer(Performance& run, const Inquiry& inquiry) {
  const Question& question = inquiry.question;
  const Given* given = Find(question);
  const bool isKey = question.kind == QuestionKind::Prompt || question.kind == QuestionKind::Header;
  if (given == nullptr && isKey) return "Y";
  if (given == nullptr) run.GiveUp(Place(question) + "\"" + question.text + "\" was not asked before");
  if (given == last_)
    run.GiveUp(Place(question) + "\"" + given->text + "\" is refused for \"" + question.text + "\"");
  used_.insert(given);
  last_ = given;
  return given->text;
}

ProbeEnd SameAnswers::ChooseProbeEnd(Performance&, const Question& question) {
  const Given* given = Find(question);
  if (given == nullptr) return ProbeEnd::AsBoard;
  used_.insert(given);
  return given->isForced ? ProbeEndOf(given->text).value_or(ProbeEnd::AsBoard) : ProbeEnd::AsBoard;
}

// --- The first answers ---

std::optional<std::string> FirstAnswers::Answer(Performance& run, const Inquiry& inquiry) {
  const Question& question = inquiry.question;
  const std::string answer = AlternativesOf(inquiry).front();
  if (question.kind == QuestionKind::Value && last_ == question)
    run.GiveUp(Place(question) + "\"" + answer + "\" is refused for \"" + question.text + "\"");
  last_ = question;
  return answer;
}

// --- A file ---

bool AnswerFile::Parse(std::string_view text, std::string& error) {
  std::size_t place = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    ++place;
    if (!line.empty() && line.front() != '#' && !ParseLine(line, place, error)) return false;
  }
  return true;
}

bool AnswerFile::ParseLine(std::string_view line, std::size_t place, std::string& error) {
  const auto fail = [&](const char* reason) {
    error = "line " + std::to_string(place) + ": " + reason;
    return false;
  };
  std::string key = Key(TakeText(line, "="));
  line = Trimmed(line);
  if (key.empty() || !line.starts_with('=')) return fail("is not QUESTION = ANSWER");
  line.remove_prefix(1);
  const std::string_view answer = TakeText(line, {});
  if (!Trimmed(line).empty()) return fail("there is more behind the answer in quotes");
  Row row{.place = place, .key = std::move(key), .answer = std::string(answer)};
  const std::string_view kind = Trimmed(std::string_view(row.key).substr(1));
  const bool isDefault = row.key.starts_with('*');
  if (isDefault && !kind.empty() &&
      std::find(std::begin(kKindWords), std::end(kKindWords), kind) == std::end(kKindWords))
    return fail("behind * stands prompt, menu, header, value or probe, or nothing");
  rows_.push_back(std::move(row));
  return true;
}

/// The first row of that name that was not used; else the last one that was.
AnswerFile::Row* AnswerFile::FindNamed(const std::string& key) {
  Row* found = nullptr;
  for (Row& row : rows_) {
    if (row.key != key) continue;
    found = &row;
    if (!row.isUsed) break;
  }
  return found;
}

AnswerFile::Row* AnswerFile::FindDefault(QuestionKind kind) {
  if (Row* row = FindNamed("* " + std::string(kKindWords[static_cast<std::size_t>(kind)]))) return row;
  return kind == QuestionKind::Probe ? nullptr : FindNamed("*");
}

AnswerFile::Row* AnswerFile::Find(const Question& question) {
  if (Row* row = FindNamed("LINE " + std::to_string(question.line))) return row;
  if (Row* row = FindNamed(Key(question.text))) return row;
  return FindDefault(question.kind);
}

std::optional<std::string> AnswerFile::Answer(Performance& run, const Inquiry& inquiry) {
  const Question& question = inquiry.question;
  Row* row = Find(question);
  if (row == nullptr) run.GiveUp(Place(question) + "there is no answer to \"" + question.text + "\"");
  const bool isRepeated = row->isUsed && last_ == question;
  if (isRepeated)
    run.GiveUp(Place(question) + "\"" + row->answer + "\" is refused for \"" + question.text + "\"");
  row->isUsed = true;
  last_ = question;
  std::optional<std::string> typed = Typed(question, row->answer);
  if (!typed)
    run.GiveUp(Place(question) + "\"" + row->answer + "\" is no answer to \"" + question.text + "\"");
  return typed;
}

ProbeEnd AnswerFile::ChooseProbeEnd(Performance& run, const Question& question) {
  Row* row = Find(question);
  if (row == nullptr) return ProbeEnd::AsBoard;
  row->isUsed = true;
  const std::optional<ProbeEnd> end = ProbeEndOf(row->answer);
  if (!end)
    run.GiveUp(Place(question) + "a probe comes to yes, no or failing, not to \"" + row->answer + "\"");
  return *end;
}

void AnswerFile::End(Performance&, Outcome& outcome) {
  for (const Row& row : rows_)
    if (!row.isUsed && !row.key.starts_with('*')) outcome.unusedAnswers.push_back(row.place);
  // What a run did not come to says nothing of the file.
  if (isForMany || outcome.isGivenUp) return;
  for (const std::size_t place : outcome.unusedAnswers)
    outcome.problems.push_back("line " + std::to_string(place) + " of the answers was not used");
}

std::string AnswerText(const std::vector<Given>& given) {
  std::string text;
  for (const Given& each : given) {
    std::string answer = each.text;
    const std::vector<std::string>& choices = each.question.choices;
    const std::optional<std::string> number = MenuNumber(each.question, answer);
    if (each.question.kind == QuestionKind::Probe) continue;
    // Somebody's slip; a value that is refused is a road of its own.
    if (each.question.kind == QuestionKind::Menu && each.isInvalid) continue;
    // An item keeps its text when another is put in front of it.
    if (each.question.kind == QuestionKind::Menu && number) answer = choices[std::stoul(*number) - 1];
    text += Quoted(each.question.text) + " = " +
            (answer.find('"') == std::string::npos ? Quoted(answer) : answer) + "\n";
  }
  return text;
}

}  // namespace varnok::rehearsal
