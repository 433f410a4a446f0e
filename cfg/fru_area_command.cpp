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

}  // namespace

Status CCfgFruArea::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgFruArea::ReadFromFile");
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string keyword;
  if (!GetNextInput(cursor, keyword)) return MissingParameter("first", cfg_status::kBadLine);
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

Status CCfgFruArea::ReadArea(const std::string& keyword) {
  auto row = std::find_if(kFruAreas.begin(), kFruAreas.end(), [&keyword](const FruAreaRow& each) {
    return EqualsIgnoreCase(keyword, each.keyword);
  });
  if (row == kFruAreas.end()) {
    CCfgParser::SetLastError("%s is not a valid FRU area.", keyword);
    Trace("CCfgFruArea::ReadFromFile - Invalid FRU area", 1);
    return cfg_status::kBadFruArea;
  }
  index_ = static_cast<FruAreaIndex>(row - kFruAreas.begin());
  return kSuccess;
}

Status CCfgFruArea::ReadRecordNumber(std::string_view& cursor) {
  std::string token;
  std::uint32_t number = 0;
  if (!GetNextInput(cursor, token)) return MissingParameter("second", cfg_status::kTooManyParameters);
  if (!StringToInt(token, number)) {
    CCfgParser::SetLastError(cfg_message::kNotHexadecimal, token, GetDisplayName());
    Trace("CCfgFruArea::ReadFromFile - Invalid multi record number", 1);
    return cfg_status::kBadLine;
  }
  if (number < 1 || number > kMostRecords) {
    CCfgParser::SetLastError("Invalid multi record selection: %X.  The value must be in the range 1 - %X.",
                             number, kMostRecords);
    Trace("CCfgFruArea::ReadFromFile - Multi record number out of range", 1);
    return cfg_status::kBadValue;
  }
  recordNumber_ = static_cast<std::uint8_t>(number);
  return kSuccess;
}

Status CCfgFruArea::ReadOptions(std::string_view cursor) {
  std::string option;
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
      status = RefuseExtra(fromOption, cfg_status::kTooManyParameters);
  }
  return status;
}

Status CCfgFruArea::ReadValidateTag(std::string_view& cursor) {
  mode_ = Mode::Validate;
  if (!GetNextInput(cursor, validateTag_)) {
    CCfgParser::SetLastError("Validate command should be followed by one parameter.\n");
    Trace("CCfgFruArea::ReadFromFile - VALIDATE without a tag", 1);
    return cfg_status::kOutOfBlock;
  }
  if (parser_->CurrentFruName() == nullptr) return RefuseOutOfBlock();
  parser_->CurrentFruName()->MarkValidateOnly();
  return kSuccess;
}

Status CCfgFruArea::ReadSize(const std::string& option) {
  // Far past any area, and far from overflow when rounded up.
  constexpr std::uint32_t kLargest = 0x00FFFFF8;
  std::string_view digits = std::string_view(option).substr(kSizeOption.size());
  bool isNumber = !digits.empty() && std::all_of(digits.begin(), digits.end(),
                                                 [](char digit) { return digit >= '0' && digit <= '9'; });
  bool hasSize =
      index_ == FruAreaIndex::Chassis || index_ == FruAreaIndex::Board || index_ == FruAreaIndex::Product;
  if (!isNumber || !hasSize) {
    CCfgParser::SetLastError(cfg_message::kInvalidInput, option, GetDisplayName());
    Trace("CCfgFruArea::ReadFromFile - Invalid size", 1);
    return cfg_status::kBadValue;
  }
  size_ = 0;
  for (char digit : digits) size_ = std::min(size_ * 10 + static_cast<std::uint32_t>(digit - '0'), kLargest);
  return kSuccess;
}

bool CCfgFruArea::IsValidCommandLocation() {
  TraceScope scope("CCfgFruArea::IsValidCommandLocation");
  return (parser_ != nullptr && parser_->CurrentFruName() != nullptr) || RefuseOutOfBlock() == kSuccess;
}

Status CCfgFruArea::RefuseOutOfBlock() const {
  CCfgParser::SetLastError(cfg_message::kNoFruName);
  Trace("CCfgFruArea - FRUAREA command found without matching FRUNAME", 1);
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
  Print("FRU Area: %s\n", Keyword());
}

}  // namespace varnok
