// Where a FRUFIELD gets its value from when its script is processed, and the checks that the value must pass.
#include <algorithm>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/file_input_command.h"
#include "cfg/fru_area_command.h"
#include "cfg/fru_field_command.h"
#include "cfg/fru_name_command.h"
#include "cfg/messages.h"
#include "cfg/script_watcher.h"
#include "fru/fru_data.h"

namespace varnok {
namespace {

constexpr const char* kProcessField = "CCfgFruField::Process";
constexpr const char* kSelectField = "CCfgFruField::SelectField";
constexpr const char* kAssignValue = "CCfgFruField::AssignValueToFruField";

constexpr std::size_t kLongestValue = 64;
constexpr std::size_t kLongestChassisType = 3;
constexpr std::uint32_t kLeastChassisType = 0x01;
constexpr std::uint32_t kMostChassisType = 0x1D;

constexpr const char* kTooShort = "\nThe input '%s' is invalid, the string cannot be of length 1.\n";
constexpr const char* kTooLong =
    "\nThe input '%s' is invalid, the string cannot be longer than %d characters.\n";

}  // namespace

Status CCfgFruField::ReportFailure(const char* operation, Status status) const {
  Trace("%s - Unable to update the %s field", 1, operation, Row().keyword);
  return ReportFruFailure(status);
}

Status CCfgFruField::Process() {
  TraceScope scope(kProcessField);
  ForgetFruMessage();
  if (!IsValidCommandLocation()) {
    return Fail(kProcessField, "Out of its block", cfg_status::kOutOfBlock);
  }
  CCfgFruName& fruName = *parser_->CurrentFruName();
  std::string value;
  Status status = GetValue(fruName, value);
  // A value copied from the FRU is in the field's own form already.
  bool isText = source_ != Source::Literal || value_.has_value();
  if (status == kSuccess && isText && source_ != Source::Stdin) status = DoSpecialFieldConversions(value);
  if (status == kSuccess) status = AssignValueToFruField(fruName, value);
  if (status != kSuccess) Trace("%s - Unable to update the %s field", 1, kProcessField, Row().keyword);
  return status;
}

Status CCfgFruField::SelectField(const CCfgFruArea& area) const {
  TraceScope scope(kSelectField);
  Status status = FruData::SelectAreaEnum(area.Id());
  if (status != kSuccess) return ReportFailure(kSelectField, cfg_status::kBadFruField);
  if (field_ == fru_field::kCustom) {
    status = FruData::SelectFieldInteger(static_cast<std::uint32_t>(customNumber_) +
                                         CustomFruFieldOffset(area.Index()));
  } else {
    // A field that the area lacks is refused when the script is read; after VALIDATE the area is none.
    std::optional<FruFieldId> field = FixedFruField(Row(), area.Index());
    status = field ? FruData::SelectFieldEnum(*field) : fru_status::kNoSuchItem;
  }
  return status == kSuccess ? kSuccess : ReportFailure(kSelectField, cfg_status::kBadFruField);
}

Status CCfgFruField::GetValue(CCfgFruName& fruName, std::string& value) {
  switch (source_) {
    case Source::Env:
      return GetValueFromVariable(value, kLongestValue);
    case Source::EnvFile: {
      std::string fileName;
      Status status = GetValueFromVariable(fileName, CCfgFileInputCommand::kPathCapacity);
      return status == kSuccess ? GetValueFromFile(fileName, value) : status;
    }
    case Source::File:
      return GetValueFromFile(sourceName_, value);
    case Source::Stdin:
      return AskOperator(value);
    case Source::Literal:
      break;
  }
  if (!value_) return GetCurrentValue(fruName, value);
  value = *value_;
  return kSuccess;
}

Status CCfgFruField::GetCurrentValue(CCfgFruName& fruName, std::string& value) const {
  Status status = fruName.SelectFru(true);
  if (status != kSuccess) return ReportFruFailure(cfg_status::kBadFruField);
  if (status = SelectField(*fruName.GetFruArea()); status != kSuccess) return status;
  const std::uint8_t* data = nullptr;
  std::uint32_t length = 0;
  if (FruData::GetFieldDataValue(data, length) != kSuccess) return ReportFruFailure(cfg_status::kBadFruField);
  value.assign(data, data + length);
  return kSuccess;
}

Status CCfgFruField::GetValueFromVariable(std::string& value, std::size_t size) const {
  if (GetEnvVariable(sourceName_, value, size)) return kSuccess;
  CCfgParser::SetLastError(
      "Unable to read the FRU field value from the environment variable '%s', the variable does not exist.",
      sourceName_);
  return Fail(kProcessField, "The variable does not exist", cfg_status::kNoVariable);
}

Status CCfgFruField::GetValueFromFile(std::string_view fileName, std::string& value) {
  std::u16string path;
  if (!GetFile(Widen(fileName), path, CCfgFileInputCommand::kPathCapacity)) {
    CCfgParser::SetLastError("Unable to retrieve file for FRU field input %s.", fileName);
    return Fail(kProcessField, "Unable to retrieve file", cfg_status::kFileNotFound);
  }
  if (GetStringFromFile(Narrow(path), value, kLongestValue, sourceLine_)) return kSuccess;
  return Fail(kProcessField, "Unable to read the value", cfg_status::kBadLine);
}

std::size_t CCfgFruField::GetMaxFieldSize() const {
  TraceScope scope("CCfgFruField::GetMaxFieldSize");
  return IsChassisType() ? kLongestChassisType : kLongestValue;
}

/// The room for an answer, with its end: what the field holds now and what the area has free besides.
Status CCfgFruField::LongestAnswer(CCfgFruName& fruName, std::size_t& size) const {
  if (fruName.SelectFru(false) != kSuccess) return ReportFruFailure(cfg_status::kBadFruField);
  if (Status status = SelectField(*fruName.GetFruArea()); status != kSuccess) return status;
  const std::uint8_t* data = nullptr;
  std::uint32_t length = 0;
  std::uint32_t freeBytes = 0;
  if (FruData::GetFieldDataValue(data, length) != kSuccess || FruData::GetMaxFieldSize(freeBytes) != kSuccess)
    return ReportFruFailure(cfg_status::kBadFruField);
  // 32-bit arithmetic: an area with less than no room left gives 0.
  std::uint32_t room = length + 1 + freeBytes;
  size = std::min({static_cast<std::size_t>(room), GetMaxFieldSize(), kLongestValue});
  return kSuccess;
}

void CCfgFruField::TellQuestion(const CCfgFruName& fruName, std::size_t size) const {
  std::string name = std::string(fruName.GetFruArea()->Keyword()) + ' ' + Row().description;
  if (field_ == fru_field::kCustom) name += ' ' + std::string(1, static_cast<char>('0' + customNumber_));
  Tell(&ScriptWatcher::Asks, ScriptQuestion{.kind = ScriptQuestionKind::Value,
                                            .text = name,
                                            .line = Line(),
                                            .longest = size == 0 ? 0 : size - 1,
                                            .isChassisType = IsChassisType()});
}

Status CCfgFruField::AskOperator(std::string& value) {
  while (CCfgFruName* fruName = parser_->CurrentFruName()) {
    std::size_t size = 0;
    if (Status status = LongestAnswer(*fruName, size); status != kSuccess) return status;
    if (size == 0) Display("The %s FRU area has no availble space.\n", Row().description);
    char16_t digit = field_ == fru_field::kCustom ? static_cast<char16_t>(u'0' + customNumber_) : u' ';
    DisplayWide("Enter the value for %s %s %s:", Widen(fruName->GetFruArea()->Keyword()), Row().description,
                std::u16string_view(&digit, 1));
    if (IsScriptWatched()) TellQuestion(*fruName, size);
    std::u16string text;
    if (!GetInputString(text, size, true)) {
      return Fail(kProcessField, "Unable to read the operator's input", cfg_status::kNoInput);
    }
    value = Narrow(text);
    if (!IsValidInput(value)) continue;
    Tell(&ScriptWatcher::Asks,
         ScriptQuestion{.kind = ScriptQuestionKind::IsCorrect, .text = value, .line = Line()});
    DisplayWide("\nIs this correct: '%s'? ", text);
    char answer = ReadYesOrNo();
    EchoAnswer(answer);
    if (ToUpper(answer) != 'N') return kSuccess;
  }
  return Fail(kProcessField, "No FRUNAME", cfg_status::kOutOfBlock);
}

bool CCfgFruField::IsValidInput(std::string_view text) const {
  TraceScope scope("CCfgFruField::IsValidInput");
  if (text.size() == 1) return DisplayWide(kTooShort, Widen(text)), false;
  if (text.size() >= kLongestValue) return DisplayWide(kTooLong, Widen(text), kLongestValue - 1), false;
  if (!IsChassisType()) return true;
  std::uint32_t type = 0;
  if (!StringToInt(text, type)) {
    DisplayWide("\nThe input '%s' is invalid, it must be a valid hexidecimal number from %02X to %02X.\n",
                Widen(text), kLeastChassisType, kMostChassisType);
    return false;
  }
  if (type >= kLeastChassisType && type <= kMostChassisType) return true;
  DisplayWide("\nThe input '%02X' is invalid, it must be a hexidecimal number from %02X to %02X.\n", type,
              kLeastChassisType, kMostChassisType);
  return false;
}

Status CCfgFruField::DoSpecialFieldConversions(std::string& value) const {
  TraceScope scope("CCfgFruField::DoSpecialFieldConversions");
  if (!IsChassisType()) return kSuccess;
  constexpr std::size_t kMostDigits = 2;
  std::uint8_t type = 0;
  if (value.size() > kMostDigits) {
    CCfgParser::SetLastError(kTooLong, Widen(value), kMostDigits);
  } else if (!StringToInt(value, type)) {
    CCfgParser::SetLastError(cfg_message::kNotHexadecimal, value, GetDisplayName());
  } else {
    value.assign(1, static_cast<char>(type));
    return kSuccess;
  }
  return Fail("CCfgFruField::DoSpecialFieldConversions", "Invalid chassis type", cfg_status::kBadFruField);
}

Status CCfgFruField::AssignValueToFruField(CCfgFruName& fruName, const std::string& value) const {
  TraceScope scope(kAssignValue);
  // The byte of a chassis type is no text of length 1.
  if (value.size() == 1 && !IsChassisType()) {
    CCfgParser::SetLastError(kTooShort, Widen(value));
    return Fail(kAssignValue, "The value is too short", cfg_status::kBadFruField);
  }
  if (value.size() > GetMaxFieldSize()) {
    CCfgParser::SetLastError(kTooLong, Widen(value), GetMaxFieldSize());
    return Fail(kAssignValue, "The value is too long", cfg_status::kBadFruField);
  }
  if (fruName.SelectFru(false) != kSuccess) return ReportFailure(kAssignValue, cfg_status::kBadFruField);
  if (Status status = SelectField(*fruName.GetFruArea()); status != kSuccess) return status;
  std::vector<std::uint8_t> bytes(value.begin(), value.end());
  bytes.push_back(0);
  if (FruData::SetFieldDataValue(bytes.data(), static_cast<std::uint32_t>(value.size())) != kSuccess)
    return ReportFailure(kAssignValue, cfg_status::kBadFruField);
  fruName.MarkModified();
  return kSuccess;
}

}  // namespace varnok
