#include "cfg/dialogue_commands.h"

#include <algorithm>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

constexpr const char* kMisplaced = "Command %s can not be used here, it must follow a PROMPT command.";
constexpr const char* kYes = "YES";
constexpr const char* kNo = "NO";

}  // namespace

// --- DISPLAY ---

Status CCfgDisplay::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgDisplay::ReadFromFile");
  return ReadOneParameter(file, text_, cfg_status::kTooManyParameters);
}

Status CCfgDisplay::Process() {
  TraceScope scope("CCfgDisplay::Process");
  Display(text_);
  Display("\n");
  return kSuccess;
}

// --- PROMPT ---

Status CCfgPrompt::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgPrompt::ReadFromFile");
  if (Status status = ReadOneParameter(file, question_, cfg_status::kBadLine); status != kSuccess)
    return status;
  return ReadAnswers(file);
}

Status CCfgPrompt::ReadAnswers(CFileCfg& file) {
  std::uint32_t lastLine = file.GetCurrentLineNumber();
  Status status = kSuccess;
  for (bool isOpen = true; isOpen && status == kSuccess;) {
    std::string keyword;
    std::string rest;
    if (!file.GetFirstInput(keyword, kLineCapacity) || !file.GetRemainingLine(rest, kLineCapacity)) {
      Trace("CCfgPrompt::ReadFromFile - No line follows", 1);
      status = cfg_status::kBadLine;
      break;
    }
    // Whatever the line holds: it is checked even when it belongs to another command.
    if (std::count(rest.begin(), rest.end(), '"') % 2 != 0) {
      CCfgParser::SetLastError(cfg_message::kOddQuotes);
      Trace("CCfgPrompt::ReadFromFile - Invalid number of quotes in line", 1);
      return cfg_status::kBadLine;
    }
    bool isYes = EqualsIgnoreCase(keyword, kYes);
    isOpen = isYes;
    if (!isYes && !EqualsIgnoreCase(keyword, kNo)) break;
    lastLine = file.GetCurrentLineNumber();
    status = isYes ? ReadTag(rest, kYes, yesTag_) : ReadTag(rest, kNo, noTag_);
  }
  file.SetCurrentLineNumber(lastLine + 1);
  return status;
}

Status CCfgPrompt::ReadTag(std::string_view rest, const char* name, std::optional<std::string>& tag) {
  if (!GetNextInput(rest, tag.emplace())) return MissingParameter("first", cfg_status::kBadLine, name);
  return RefuseExtra(rest, cfg_status::kBadLine, name);
}

Status CCfgPrompt::Process() {
  TraceScope scope("CCfgPrompt::Process");
  if (IsBufferEmpty(question_)) {
    CCfgParser::SetLastError(cfg_message::kInvalidInput, question_, GetDisplayName());
    Trace("CCfgPrompt::Process - The question is empty", 1);
    return cfg_status::kBadValue;
  }
  Display(question_);
  Display(" ");
  // Input that fails leaves no N behind: it counts as a yes.
  char answer = ReadYesOrNo();
  const std::optional<std::string>& tag = ToUpper(answer) == 'N' ? noTag_ : yesTag_;
  if (tag && parser_ != nullptr) parser_->SetTag(tag->c_str());
  EchoAnswer(answer);
  return kSuccess;
}

// --- YES, NO ---

bool CCfgYes::IsValidCommandLocation() {
  TraceScope scope("CCfgYes::IsValidCommandLocation");
  CCfgParser::SetLastError(kMisplaced, GetDisplayName());
  Trace("CCfgYes::IsValidCommandLocation - YES without a PROMPT", 1);
  return false;
}

bool CCfgNo::IsValidCommandLocation() {
  TraceScope scope("CCfgNo::IsValidCommandLocation");
  CCfgParser::SetLastError(kMisplaced, GetDisplayName());
  Trace("CCfgNo::IsValidCommandLocation - NO without a PROMPT", 1);
  return false;
}

}  // namespace varnok
