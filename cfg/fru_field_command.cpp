#include "cfg/fru_field_command.h"

#include <algorithm>
#include <array>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_area_command.h"
#include "cfg/fru_name_command.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

constexpr const char* kReadField = "CCfgFruField::ReadFromFile";
constexpr std::size_t kKeywordLength = 2;
constexpr std::int32_t kMostCustomFields = 9;

/// In the order of their numbers.
constexpr std::array<std::string_view, 4> kSources{"FILE", "ENV", "ENVFILE", "STDIN"};
constexpr std::array<std::string_view, 5> kInputTypes{"ASCII", "ASCII6", "BCD", "BIN", "UNICODE"};

/// The part up to the next ':', which is taken off `rest` too; nothing when there is no ':'.
std::optional<std::string_view> TakePart(std::string_view& rest) {
  std::size_t colon = rest.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  std::string_view part = rest.substr(0, colon);
  rest.remove_prefix(colon + 1);
  return part;
}

template <std::size_t kCount>
std::size_t IndexOf(const std::array<std::string_view, kCount>& names, std::string_view name) {
  auto found = std::find_if(names.begin(), names.end(),
                            [name](std::string_view each) { return EqualsIgnoreCase(name, each); });
  return static_cast<std::size_t>(found - names.begin());
}

template <class Text>
Status RefuseValue(const char* message, const Text& text, Status status = cfg_status::kBadLine) {
  CCfgParser::SetLastError(message, text);
  return Fail(kReadField, "Invalid field value", status);
}

}  // namespace

Status CCfgFruField::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadField);
  std::string_view cursor, keyword;
  if (Status status = ReadLine(kReadField, file, cursor); status != kSuccess) return status;
  if (!GetNextInput(cursor, keyword)) return MissingParameter(kReadField, "first", cfg_status::kBadLine);
  if (Status status = ReadField(keyword); status != kSuccess) return status;
  if (!IsBufferEmpty(cursor)) {
    if (Status status = ReadValue(cursor); status != kSuccess) return status;
  }
  return CheckArea();
}

Status CCfgFruField::ReadField(std::string_view keyword) {
  field_ = FindFruField(keyword);
  if (field_ == fru_field::kNone)
    return RefuseValue("%s is not a valid FRU field.", keyword, cfg_status::kBadFruField);
  if (field_ != fru_field::kCustom) return kSuccess;
  if (!StringToDec(keyword.substr(kKeywordLength), customNumber_)) {
    return Fail(kReadField, "Invalid custom field number", cfg_status::kBadLine);
  }
  if (customNumber_ < 1 || customNumber_ > kMostCustomFields) {
    return Fail(kReadField, "Custom field number out of range", cfg_status::kBadValue);
  }
  return kSuccess;
}

Status CCfgFruField::ReadValue(std::string_view cursor) {
  if (field_ == fru_field::kMfgDate) {
    CCfgParser::SetLastError("The FRUFIELD MD is not allowed to have any parameters.");
    return Fail(kReadField, "MD with a value", cfg_status::kTooManyParameters);
  }
  std::string_view token;
  if (!GetNextInput(cursor, token)) return RefuseExtra(kReadField, cursor, cfg_status::kTooManyParameters);
  if (!token.starts_with('@')) {
    value_ = token;
  } else if (Status status = ReadRedirection(token); status != kSuccess) {
    return status;
  }
  return RefuseExtra(kReadField, cursor, cfg_status::kTooManyParameters);
}

/// "@STDIN:type", "@ENV:type:variable", "@FILE:type:file:line" or "@ENVFILE:type:variable:line".
Status CCfgFruField::ReadRedirection(std::string_view text) {
  std::string_view rest = text.substr(1);
  std::optional<std::string_view> kind = TakePart(rest);
  if (!kind)
    return RefuseValue("Unable to determine FRU field redirection type from string:\n   '%s'.", text);
  std::size_t source = IndexOf(kSources, *kind);
  if (source == kSources.size()) return RefuseValue("%s is not a valid FRU redirection type.", *kind);
  source_ = static_cast<Source>(source);
  std::optional<std::string_view> type = TakePart(rest);
  if (!type && source_ != Source::Stdin)
    return RefuseValue("Unable to determine FRU field input type from string:\n'%s'.", text);
  if (Status status = ReadInputType(type.value_or(rest)); status != kSuccess) return status;
  return source_ == Source::Stdin ? kSuccess : ReadSourceName(text, rest);
}

Status CCfgFruField::ReadInputType(std::string_view name) const {
  std::size_t type = IndexOf(kInputTypes, name);
  if (type == kInputTypes.size()) return RefuseValue("%s is not a valid FRU input type.", name);
  if (type != 0) return RefuseValue("%s is an unsupported FRU input type.", name, cfg_status::kBadFruField);
  return kSuccess;
}

Status CCfgFruField::ReadSourceName(std::string_view text, std::string_view rest) {
  std::optional<std::string_view> name = TakePart(rest);
  sourceName_ = name.value_or(rest);
  if (name) return ReadLineNumber(text, rest);
  if (source_ == Source::Env) return kSuccess;
  return RefuseValue("Unable to determine environment variable name from string: '%s'.", text);
}

Status CCfgFruField::ReadLineNumber(std::string_view text, std::string_view digits) {
  if (!StringToDec(digits, sourceLine_))
    return RefuseValue("Unable to read the FRU field file redirection line number from string:\n   '%s'",
                       Widen(text));
  if (sourceLine_ < 1)
    return RefuseValue("The FRU field file redirection line number: %d is not valid.", sourceLine_);
  return kSuccess;
}

Status CCfgFruField::CheckArea() const {
  CCfgFruName* fruName = parser_->CurrentFruName();
  if (fruName == nullptr || fruName->GetFruArea() == nullptr) {
    RefuseOutOfBlock(kReadField, cfg_message::kNoFruArea);
    return cfg_status::kOutOfBlock;
  }
  if (fruName->GetFruArea()->IsFieldAllowed(Row().bit)) return kSuccess;
  CCfgParser::SetLastError("%s is not a valid FRU field for the %s FRU area.", Row().keyword,
                           fruName->GetFruArea()->Keyword());
  return Fail(kReadField, "The area has no such field", cfg_status::kBadFruField);
}

bool CCfgFruField::IsValidCommandLocation() {
  constexpr const char* kName = "CCfgFruField::IsValidCommandLocation";
  TraceScope scope(kName);
  if (parser_ == nullptr || parser_->CurrentFruName() == nullptr)
    return RefuseOutOfBlock(kName, cfg_message::kNoFruName);
  return parser_->CurrentFruName()->GetFruArea() != nullptr ||
         RefuseOutOfBlock(kName, cfg_message::kNoFruArea);
}

bool CCfgFruField::RefuseOutOfBlock(const char* operation, const char* message) {
  CCfgParser::SetLastError(message);
  Trace("%s - %s", 1, operation, message);
  return false;
}

void CCfgFruField::DebugPrint() {
  TraceScope scope("CCfgFruField::DebugPrint");
  Print("FRU Field: %s\n", Row().keyword);
}

void CCfgFruField::Describe(ScriptVisitor& visitor) const {
  bool isVariable = source_ == Source::Env || source_ == Source::EnvFile;
  if (isVariable) visitor.Fact(ScriptFact::Variable, sourceName_, Line());
  if (source_ == Source::File) visitor.Fact(ScriptFact::ValueFile, sourceName_, Line());
  if (source_ == Source::Stdin) visitor.Fact(ScriptFact::AsksValue, Row().keyword, Line());
}

CommandFamily FruFieldCommands() {
  static constexpr CommandRow kRows[] = {{CommandType{13}, "FRUFIELD", "FRUFIELD", Create<CCfgFruField>}};
  return kRows;
}

}  // namespace varnok
