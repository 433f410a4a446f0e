// MENUTITLE, MENU and MENUPROMPT: a numbered menu, whose answer sets the tag of the item chosen.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/script_watcher.h"

namespace varnok {
namespace {

constexpr std::size_t kMostTitledItems = 32;
constexpr std::size_t kAnswerCapacity = 16;
constexpr const char* kMenu = "MENU";
constexpr const char* kMenuPrompt = "MENUPROMPT";
constexpr const char* kReadMenu = "CCfgMenu::ReadFromFile";
constexpr const char* kReadAnswers = "CCfgMenu::ReadAnswersFromFile";

struct MenuItem {
  std::string_view tag;   ///< what choosing the item sets
  std::string_view text;  ///< what is shown for it
  std::uint32_t line;
};

class CCfgMenu : public CCfgCommand {
 public:
  /// MENU and MENUTITLE make the same command; a menu that MENU begins has no title.
  explicit CCfgMenu(bool hasTitle) : hasTitle_(hasTitle) {}

  Status ReadFromFile(CFileCfg& file) override;
  Status ReadAnswersFromFile(CFileCfg& file);
  Status Process() override;
  void DebugPrint() override;
  void Describe(ScriptVisitor& visitor) const override;

 private:
  Status ReadItem(std::string_view rest, std::uint32_t line);
  void Show() const;
  void TellQuestion() const;
  std::string_view Title() const { return hasTitle_ ? FirstParameter() : std::string_view(); }

  bool hasTitle_;
  std::vector<MenuItem> items_;
};

/// An unsigned number in the base that its prefix names: "0x" hexadecimal, "0" octal, else decimal. What
/// follows the digits is not looked at. 0 for text that is no number; any number too large to choose an item,
/// and any negative one, gives the largest.
std::uint32_t ToNumber(std::u16string_view text) {
  constexpr std::uint32_t kLargest = 0xFFFFFFFF;
  text.remove_prefix(std::min(text.find_first_not_of(u' '), text.size()));
  bool isNegative = text.starts_with(u'-');
  if (isNegative || text.starts_with(u'+')) text.remove_prefix(1);
  int base = 10;
  if (text.size() > 2 && text[0] == u'0' && ToUpper(text[1]) == u'X') {
    base = 16;
    text.remove_prefix(2);
  } else if (text.starts_with(u'0')) {
    base = 8;
  }
  std::uint64_t number = 0;
  for (char16_t character : text) {
    int digit = character < 0x80 ? HexDigitValue(static_cast<char>(character)) : -1;
    if (digit < 0 || digit >= base) break;
    number = std::min<std::uint64_t>(number * static_cast<unsigned>(base) + static_cast<unsigned>(digit),
                                     kLargest);
  }
  return isNegative && number != 0 ? kLargest : static_cast<std::uint32_t>(number);
}

Status CCfgMenu::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadMenu);
  if (!hasTitle_) {
    std::string_view rest;
    if (Status status = ReadLine(kReadMenu, file, rest); status != kSuccess) return status;
    // The MENU line is read again, as the first item.
    file.SetCurrentLineNumber(file.GetCurrentLineNumber());
    return ReadAnswersFromFile(file);
  }
  if (Status status = ReadOneParameter(kReadMenu, file, cfg_status::kTooManyParameters); status != kSuccess)
    return status;
  if (Status status = ReadAnswersFromFile(file); status != kSuccess) return status;
  // Kept: a menu that MENU begins may have any number of items; old scripts stand on it.
  if (items_.size() <= kMostTitledItems) return kSuccess;
  CCfgParser::SetLastError("Invalid number of menus to prompt: %d, the maximum allowed is %d.", items_.size(),
                           kMostTitledItems);
  return Fail(kReadMenu, "Invalid number of menus to prompt", cfg_status::kUnknownCommand);
}

Status CCfgMenu::ReadAnswersFromFile(CFileCfg& file) {
  TraceScope scope(kReadAnswers);
  Status status = kSuccess;
  for (;;) {
    std::string_view keyword, rest;
    if (!file.GetFirstInput(keyword, kLineCapacity) || !file.GetRemainingLine(rest, kLineCapacity)) {
      Trace("%s - Unable to read a line", 1, kReadAnswers);
      if (file.EndOfFile())
        CCfgParser::SetLastError("The %s command was not found before the end of the file.", kMenuPrompt);
      return cfg_status::kBadLine;
    }
    if (EqualsIgnoreCase(keyword, kMenuPrompt)) {
      if (Status extra = RefuseExtra(kReadAnswers, rest, cfg_status::kTooManyParameters); extra != kSuccess)
        status = extra;
      break;
    }
    if (!EqualsIgnoreCase(keyword, kMenu)) {
      CCfgParser::SetLastError("The '%s' command cannot be used between MENUTITLE, MENU, and MENUPROMPT.",
                               keyword);
      return Fail(kReadAnswers, "Command out of order", cfg_status::kOutOfPlace);
    }
    std::size_t count = items_.size();
    if (Status item = ReadItem(rest, file.CurrentIndex()); item != kSuccess) status = item;
    if (items_.size() == count) return status;
  }
  if (!items_.empty()) return status;
  CCfgParser::SetLastError("MENUPROMPT command found without a preceding MENU command.");
  return Fail(kReadAnswers, "No items", cfg_status::kBadLine);
}

/// Adds an item. An item with too much behind it is added too: reading goes on, and fails at the menu's end.
Status CCfgMenu::ReadItem(std::string_view rest, std::uint32_t line) {
  MenuItem item{.tag = {}, .text = {}, .line = line};
  if (!GetNextInput(rest, item.tag))
    return MissingParameter(kReadAnswers, "first", cfg_status::kTooManyParameters, kMenu);
  if (IsBufferEmpty(rest) || !GetNextInput(rest, item.text)) item.text = item.tag;
  items_.push_back(item);
  return RefuseExtra(kReadAnswers, rest, cfg_status::kTooManyParameters);
}

void CCfgMenu::Show() const {
  if (hasTitle_) Display("%hs", Title());
  Display("\n");
  for (std::size_t i = 0; i < items_.size(); ++i) {
    Display("%d\t%hs", i + 1, items_[i].text);
    Display("\n");
  }
}

void CCfgMenu::TellQuestion() const {
  std::vector<std::string_view> texts;
  for (const MenuItem& item : items_) texts.push_back(item.text);
  Tell(&ScriptWatcher::Asks, ScriptQuestion{.kind = ScriptQuestionKind::Menu,
                                            .text = Title(),
                                            .line = Line(),
                                            .items = texts,
                                            .longest = kAnswerCapacity - 1});
}

Status CCfgMenu::Process() {
  TraceScope scope("CCfgMenu::Process");
  Show();
  std::u16string answer;
  std::uint32_t number = 0;
  while (number < 1 || number > items_.size()) {
    // Nothing could ever be read: asking again would never end.
    if (Callbacks().inputChar == nullptr) {
      return Fail("CCfgMenu::Process", "Input callback function not set", cfg_status::kNoInput);
    }
    if (IsScriptWatched()) TellQuestion();
    number = GetInputString(answer, kAnswerCapacity, true) ? ToNumber(answer) : 0;
  }
  Tell(&ScriptWatcher::Reaches, items_[number - 1].line);
  DisplayWide("\n%s\n", answer);
  // Kept: the last item stands for none of the others, and sets no tag.
  if (number < items_.size() && parser_ != nullptr) parser_->SetTag(items_[number - 1].tag);
  return kSuccess;
}

void CCfgMenu::DebugPrint() {
  TraceScope scope("CCfgMenu::DebugPrint");
  Print("%s\n", Title());
  for (const MenuItem& item : items_) Print("%s\t%s\n", item.tag, item.text);
}

void CCfgMenu::Describe(ScriptVisitor& visitor) const {
  visitor.Fact(ScriptFact::Question, Title(), Line());
  for (const MenuItem& item : items_) {
    visitor.Fact(ScriptFact::Item, item.text, item.line);
    if (&item != &items_.back()) visitor.Fact(ScriptFact::SetsTag, item.tag, item.line);
  }
}

}  // namespace

CommandFamily MenuCommands() {
  // Messages name a menu that MENU begins MENUTITLE, too.
  constexpr CommandType kType{15};
  static constexpr CommandRow kRows[] = {
      {kType, "MENUTITLE", "MENUTITLE", Create<CCfgMenu, true>},
      {kType, kMenu, "MENUTITLE", Create<CCfgMenu, false>},
  };
  return kRows;
}

}  // namespace varnok
