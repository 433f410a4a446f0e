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
  Trace("CCfgFruField::ReadFromFile - Invalid field value", 1);
  return status;
}

}  // namespace

Status CCfgFruField::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgFruField::ReadFromFile");
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string keyword;
  if (!GetNextInput(cursor, keyword)) return MissingParameter("first", cfg_status::kBadLine);
  if (Status status = ReadField(keyword); status != kSuccess) return status;
  if (!IsBufferEmpty(cursor)) {
    if (Status status = ReadValue(cursor); status != kSuccess) return status;
  }
  return CheckArea();
}

Status CCfgFruField::ReadField(const std::string& keyword) {
  field_ = FindFruField(keyword);
  if (field_ == fru_field::kNone)
    return RefuseValue("%s is not a valid FRU field.", keyword, cfg_status::kBadFruField);
  if (field_ != fru_field::kCustom) return kSuccess;
  if (!StringToDec(std::string_view(keyword).substr(kKeywordLength), customNumber_)) {
    Trace("CCfgFruField::ReadFromFile - Invalid custom field number", 1);
    return cfg_status::kBadLine;
  }
  if (customNumber_ < 1 || customNumber_ > kMostCustomFields) {
    Trace("CCfgFruField::ReadFromFile - Custom field number out of range", 1);
    return cfg_status::kBadValue;
  }
  return kSuccess;
}

Status CCfgFruField::ReadValue(std::string_view cursor) {
  if (field_ == fru_field::kMfgDate) {
    CCfgParser::SetLastError("The FRUFIELD MD is not allowed to have any parameters.");
    Trace("CCfgFruField::ReadFromFile - MD with a value", 1);
    return cfg_status::kTooManyParameters;
  }
  std::string token;
  if (!GetNextInput(cursor, token)) return RefuseExtra(cursor, cfg_status::kTooManyParameters);
  if (!token.starts_with('@')) {
    value_ = token;
  } else if (Status status = ReadRedirection(token); status != kSuccess) {
    return status;
  }
  return RefuseExtra(cursor, cfg_status::kTooManyParameters);
}

/// "@STDIN:type", "@ENV:type:variable", "@FILE:type:file:line" or "@ENVFILE:type:variable:line".
Status CCfgFruField::ReadRedirection(const std::string& text) {
  std::string_view rest = std::string_view(text).substr(1);
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

Status CCfgFruField::ReadSourceName(const std::string& text, std::string_view rest) {
  std::optional<std::string_view> name = TakePart(rest);
  sourceName_ = name.value_or(rest);
  if (name) return ReadLineNumber(text, rest);
  if (source_ == Source::Env) return kSuccess;
  return RefuseValue("Unable to determine environment variable name from string: '%s'.", text);
}

Status CCfgFruField::ReadLineNumber(const std::string& text, std::string_view digits) {
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
    RefuseOutOfBlock(cfg_message::kNoFruArea);
    return cfg_status::kOutOfBlock;
  }
  if (fruName->GetFruArea()->IsFieldAllowed(Row().bit)) return kSuccess;
  CCfgParser::SetLastError("%s is not a valid FRU field for the %s FRU area.", Row().keyword,
                           fruName->GetFruArea()->Keyword());
  Trace("CCfgFruField::ReadFromFile - The area has no such field", 1);
  return cfg_status::kBadFruField;
}

bool CCfgFruField::IsValidCommandLocation() {
  TraceScope scope("CCfgFruField::IsValidCommandLocation");
  if (parser_ == nullptr || parser_->CurrentFruName() == nullptr)
    return RefuseOutOfBlock(cfg_message::kNoFruName);
  return parser_->CurrentFruName()->GetFruArea() != nullptr || RefuseOutOfBlock(cfg_message::kNoFruArea);
}

bool CCfgFruField::RefuseOutOfBlock(const char* message) const {
  CCfgParser::SetLastError(message);
  Trace("CCfgFruField - %s", 1, message);
  return false;
}

void CCfgFruField::DebugPrint() {
  Print("FRU Field: %s\n", Row().keyword);
}

}  // namespace varnok
