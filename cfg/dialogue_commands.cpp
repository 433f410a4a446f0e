// Commands that talk to the operator in one line: DISPLAY and PROMPT with its YES and NO.
#include <algorithm>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"
#include "cfg/script_watcher.h"

namespace varnok {
namespace {

constexpr const char* kNoPrompt = "Command %s can not be used here, it must follow a PROMPT command.";
constexpr const char* kReadPrompt = "CCfgPrompt::ReadFromFile";
constexpr const char* kYes = "YES";
constexpr const char* kNo = "NO";

class CCfgDisplay : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override { TraceScope scope("CCfgDisplay::DebugPrint"); }
};

/// The tag of a YES or NO line; without text when there is no such line.
struct Answer {
  std::string_view tag;
  std::uint32_t line = 0;
};

/// A question, whose answer sets the tag of the YES or of the NO line that follows it.
class CCfgPrompt : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void Describe(ScriptVisitor& visitor) const override;

 private:
  Status ReadAnswers(CFileCfg& file);
  Status ReadTag(std::string_view rest, const char* name, Answer& answer);

  Answer yes_;
  Answer no_;
};

/// A YES line that no PROMPT has taken.
class CCfgYes : public CCfgCommand {
 public:
  bool IsValidCommandLocation() override;
};

/// A NO line that no PROMPT has taken.
class CCfgNo : public CCfgCommand {
 public:
  bool IsValidCommandLocation() override;
};

// --- DISPLAY ---

Status CCfgDisplay::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgDisplay::ReadFromFile";
  TraceScope scope(kName);
  return ReadOneParameter(kName, file, cfg_status::kTooManyParameters);
}

Status CCfgDisplay::Process() {
  TraceScope scope("CCfgDisplay::Process");
  Display(FirstParameter());
  Display("\n");
  return kSuccess;
}

// --- PROMPT ---

Status CCfgPrompt::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadPrompt);
  if (Status status = ReadOneParameter(kReadPrompt, file, cfg_status::kBadLine); status != kSuccess)
    return status;
  return ReadAnswers(file);
}

Status CCfgPrompt::ReadAnswers(CFileCfg& file) {
  std::uint32_t lastLine = file.GetCurrentLineNumber();
  Status status = kSuccess;
  for (bool isOpen = true; isOpen && status == kSuccess;) {
    std::string_view keyword, rest;
    if (!file.GetFirstInput(keyword, kLineCapacity) || !file.GetRemainingLine(rest, kLineCapacity)) {
      Trace("%s - No line follows", 1, kReadPrompt);
      status = cfg_status::kBadLine;
      break;
    }
    // Whatever the line holds: it is checked even when it belongs to another command.
    if (std::count(rest.begin(), rest.end(), '"') % 2 != 0) {
      CCfgParser::SetLastError(cfg_message::kOddQuotes);
      return Fail(kReadPrompt, "Invalid number of quotes in line", cfg_status::kBadLine);
    }
    bool isYes = EqualsIgnoreCase(keyword, kYes);
    isOpen = isYes;
    if (!isYes && !EqualsIgnoreCase(keyword, kNo)) break;
    lastLine = file.GetCurrentLineNumber();
    Answer& answer = isYes ? yes_ : no_;
    answer.line = file.CurrentIndex();
    status = ReadTag(rest, isYes ? kYes : kNo, answer);
  }
  file.SetCurrentLineNumber(lastLine + 1);
  return status;
}

Status CCfgPrompt::ReadTag(std::string_view rest, const char* name, Answer& answer) {
  if (!GetNextInput(rest, answer.tag))
    return MissingParameter(kReadPrompt, "first", cfg_status::kBadLine, name);
  return RefuseExtra(kReadPrompt, rest, cfg_status::kBadLine, name);
}

Status CCfgPrompt::Process() {
  TraceScope scope("CCfgPrompt::Process");
  std::string_view question = FirstParameter();
  if (IsBufferEmpty(question)) {
    CCfgParser::SetLastError(cfg_message::kInvalidInput, question, GetDisplayName());
    return Fail("CCfgPrompt::Process", "The question is empty", cfg_status::kBadValue);
  }
  Tell(&ScriptWatcher::Asks,
       ScriptQuestion{.kind = ScriptQuestionKind::YesOrNo, .text = question, .line = Line()});
  Display(question);
  Display(" ");
  // Kept: input that fails leaves no N behind and counts as a yes; scripts run without an operator go on.
  char answer = ReadYesOrNo();
  const Answer& chosen = ToUpper(answer) == 'N' ? no_ : yes_;
  if (chosen.tag.data() != nullptr) Tell(&ScriptWatcher::Reaches, chosen.line);
  if (chosen.tag.data() != nullptr && parser_ != nullptr) parser_->SetTag(chosen.tag);
  EchoAnswer(answer);
  return kSuccess;
}

void CCfgPrompt::Describe(ScriptVisitor& visitor) const {
  visitor.Fact(ScriptFact::Question, FirstParameter(), Line());
  if (yes_.tag.data() != nullptr) visitor.Fact(ScriptFact::SetsTagOnYes, yes_.tag, yes_.line);
  if (no_.tag.data() != nullptr) visitor.Fact(ScriptFact::SetsTagOnNo, no_.tag, no_.line);
}

// --- YES, NO ---

bool CCfgYes::IsValidCommandLocation() {
  TraceScope scope("CCfgYes::IsValidCommandLocation");
  CCfgParser::SetLastError(kNoPrompt, GetDisplayName());
  TraceFailure("CCfgYes::IsValidCommandLocation", "YES without a PROMPT");
  return false;
}

bool CCfgNo::IsValidCommandLocation() {
  TraceScope scope("CCfgNo::IsValidCommandLocation");
  CCfgParser::SetLastError(kNoPrompt, GetDisplayName());
  TraceFailure("CCfgNo::IsValidCommandLocation", "NO without a PROMPT");
  return false;
}

}  // namespace

CommandFamily DialogueCommands() {
  static constexpr CommandRow kRows[] = {
      {CommandType{5}, "DISPLAY", "DISPLAY", Create<CCfgDisplay>},
      {CommandType{20}, "PROMPT", "PROMPT", Create<CCfgPrompt>},
      {CommandType{24}, kYes, kYes, Create<CCfgYes>},
      {CommandType{18}, kNo, kNo, Create<CCfgNo>},
  };
  return kRows;
}

}  // namespace varnok
