#include "cfg/fru_area_command.h"

#include <algorithm>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_name_command.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

constexpr std::uint32_t kMostRecords = 9;
constexpr std::string_view kSizeOption = "size=";
constexpr const char* kReadArea = "CCfgFruArea::ReadFromFile";

}  // namespace

Status CCfgFruArea::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadArea);
  std::string_view cursor, keyword;
  if (Status status = ReadLine(kReadArea, file, cursor); status != kSuccess) return status;
  if (!GetNextInput(cursor, keyword)) return MissingParameter(kReadArea, "first", cfg_status::kBadLine);
  if (Status status = ReadArea(keyword); status != kSuccess) return status;
  if (index_ == FruAreaIndex::MultiRec) {
    if (Status status = ReadRecordNumber(cursor); status != kSuccess) return status;
  }
  if (Status status = ReadOptions(cursor); status != kSuccess) return status;
  if (CCfgFruName* fruName = parser_->CurrentFruName()) {
    fruName->SetFruArea(this);
    fruName->MarkAreaMentioned(index_);
  }
  return kSuccess;
}

Status CCfgFruArea::ReadArea(std::string_view keyword) {
  auto row = std::find_if(kFruAreas.begin(), kFruAreas.end(), [keyword](const FruAreaRow& each) {
    return EqualsIgnoreCase(keyword, each.keyword);
  });
  if (row == kFruAreas.end()) {
    CCfgParser::SetLastError("%s is not a valid FRU area.", keyword);
    return Fail(kReadArea, "Invalid FRU area", cfg_status::kBadFruArea);
  }
  index_ = static_cast<FruAreaIndex>(row - kFruAreas.begin());
  return kSuccess;
}

Status CCfgFruArea::ReadRecordNumber(std::string_view& cursor) {
  std::string_view token;
  std::uint32_t number = 0;
  if (!GetNextInput(cursor, token))
    return MissingParameter(kReadArea, "second", cfg_status::kTooManyParameters);
  if (!StringToInt(token, number)) {
    CCfgParser::SetLastError(cfg_message::kNotHexadecimal, token, GetDisplayName());
    return Fail(kReadArea, "Invalid multi record number", cfg_status::kBadLine);
  }
  if (number < 1 || number > kMostRecords) {
    CCfgParser::SetLastError("Invalid multi record selection: %X.  The value must be in the range 1 - %X.",
                             number, kMostRecords);
    return Fail(kReadArea, "Multi record number out of range", cfg_status::kBadValue);
  }
  recordNumber_ = static_cast<std::uint8_t>(number);
  return kSuccess;
}

Status CCfgFruArea::ReadOptions(std::string_view cursor) {
  std::string_view option;
  Status status = kSuccess;
  while (status == kSuccess && !IsBufferEmpty(cursor)) {
    std::string_view fromOption = cursor;
    bool isRead = GetNextInput(cursor, option);
    if (isRead && EqualsIgnoreCase(option, "COMPARE"))
      mode_ = Mode::Compare;
    else if (isRead && EqualsIgnoreCase(option, "VALIDATE"))
      status = ReadValidateTag(cursor);
    else if (isRead && EqualsIgnoreCase(option.substr(0, kSizeOption.size()), kSizeOption))
      status = ReadSize(option);
    else
      status = RefuseExtra(kReadArea, fromOption, cfg_status::kTooManyParameters);
  }
  return status;
}

Status CCfgFruArea::ReadValidateTag(std::string_view& cursor) {
  mode_ = Mode::Validate;
  if (!GetNextInput(cursor, validateTag_)) {
    CCfgParser::SetLastError("Validate command should be followed by one parameter.\n");
    return Fail(kReadArea, "VALIDATE without a tag", cfg_status::kOutOfBlock);
  }
  if (parser_->CurrentFruName() == nullptr) return RefuseOutOfBlock(kReadArea);
  parser_->CurrentFruName()->MarkValidateOnly();
  return kSuccess;
}

Status CCfgFruArea::ReadSize(std::string_view option) {
  // Far past any area, and far from overflow when rounded up.
  constexpr std::uint32_t kLargest = 0x00FFFFF8;
  std::string_view digits = option.substr(kSizeOption.size());
  bool isNumber = !digits.empty() && std::all_of(digits.begin(), digits.end(),
                                                 [](char digit) { return digit >= '0' && digit <= '9'; });
  bool hasSize =
      index_ == FruAreaIndex::Chassis || index_ == FruAreaIndex::Board || index_ == FruAreaIndex::Product;
  if (!isNumber || !hasSize) {
    CCfgParser::SetLastError(cfg_message::kInvalidInput, option, GetDisplayName());
    return Fail(kReadArea, "Invalid size", cfg_status::kBadValue);
  }
  size_ = 0;
  for (char digit : digits) size_ = std::min(size_ * 10 + static_cast<std::uint32_t>(digit - '0'), kLargest);
  return kSuccess;
}

bool CCfgFruArea::IsValidCommandLocation() {
  constexpr const char* kName = "CCfgFruArea::IsValidCommandLocation";
  TraceScope scope(kName);
  return (parser_ != nullptr && parser_->CurrentFruName() != nullptr) || RefuseOutOfBlock(kName) == kSuccess;
}

Status CCfgFruArea::RefuseOutOfBlock(const char* operation) {
  CCfgParser::SetLastError(cfg_message::kNoFruName);
  Trace("%s - %s", 1, operation, cfg_message::kNoFruName);
  return cfg_status::kOutOfBlock;
}

const char* CCfgFruArea::Keyword() const {
  return index_ == FruAreaIndex::None ? "" : kFruAreas[static_cast<std::size_t>(index_)].keyword;
}

FruAreaId CCfgFruArea::Id() const {
  return index_ == FruAreaIndex::None ? FruAreaId::None : kFruAreas[static_cast<std::size_t>(index_)].area;
}

bool CCfgFruArea::IsFieldAllowed(std::uint32_t fieldBit) const {
  TraceScope scope("CCfgFruArea::IsFieldAllowed");
  return index_ != FruAreaIndex::None &&
         (kFruAreas[static_cast<std::size_t>(index_)].fieldMask & fieldBit) != 0;
}

void CCfgFruArea::DebugPrint() {
  TraceScope scope("CCfgFruArea::DebugPrint");
  Print("FRU Area: %s\n", Keyword());
}

void CCfgFruArea::Describe(ScriptVisitor& visitor) const {
  if (mode_ == Mode::Validate) visitor.Fact(ScriptFact::SetsTagOnYes, validateTag_, Line());
}

CommandFamily FruAreaCommands() {
  static constexpr CommandRow kRows[] = {{CommandType{12}, "FRUAREA", "FRUAREA", Create<CCfgFruArea>}};
  return kRows;
}

}  // namespace varnok
