// What a FRUAREA does to the FRU's image when its script is processed.
#include <algorithm>
#include <array>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_area_command.h"
#include "cfg/fru_name_command.h"
#include "fru/fru_data.h"

namespace varnok {
namespace {

constexpr const char* kProcessArea = "CCfgFruArea::Process";

using HasArea = Status (*)(bool& isPresent);

Status HasHeader(bool& isPresent) {
  isPresent = true;
  return kSuccess;
}

/// In the order of the area table.
constexpr std::array<HasArea, kFruAreaCount> kHasArea{HasHeader,
                                                      FruData::HasInternalUseArea,
                                                      FruData::HasChassisArea,
                                                      FruData::HasBoardArea,
                                                      FruData::HasProductArea,
                                                      FruData::HasMultiRecordArea};

}  // namespace

Status CCfgFruArea::Process() {
  TraceScope scope(kProcessArea);
  ForgetFruMessage();
  CCfgFruName* fruName = parser_ != nullptr ? parser_->CurrentFruName() : nullptr;
  if (fruName == nullptr) return RefuseOutOfBlock(kProcessArea);
  if (fruName->IsWholeFile()) return CopyFromFile(*fruName);
  if (mode_ == Mode::Validate) return Validate(*fruName);
  if (!DoesAreaExistInFru(*fruName)) {
    CCfgParser::SetLastError("The %s area does not exist in the system FRU, it cannot be updated.",
                             Keyword());
    return Fail(kProcessArea, "The area does not exist", cfg_status::kBadFruArea);
  }
  Status status = Select(*fruName);
  if (status == kSuccess && size_ != 0) status = Resize(*fruName);
  bool isCopiedWhole = index_ == FruAreaIndex::InternalUse || index_ == FruAreaIndex::MultiRec;
  if (status == kSuccess && isCopiedWhole) status = CopyWhole(*fruName);
  if (status == kSuccess && mode_ == Mode::Compare) fruName->MarkModified();
  return status;
}

FruWriteMode CCfgFruArea::WriteMode() const {
  return static_cast<FruWriteMode>(mode_);
}

Status CCfgFruArea::ReportFailure(Status status) const {
  Trace("%s - Unable to update the %s area", 1, kProcessArea, Keyword());
  return ReportFruFailure(status);
}

/// The operator has agreed to program the whole file over a FRU with another layout.
Status CCfgFruArea::CopyFromFile(CCfgFruName& fruName) {
  Status status = FruData::CopyAreaFromFile(fruName.Address(), Id());
  if (status == kSuccess)
    fruName.MarkModified();
  else
    (void)ReportFailure(status);
  fruName.SetFruArea(this);
  return mode_ == Mode::Validate ? kSuccess : status;
}

Status CCfgFruArea::Validate(CCfgFruName& fruName) {
  Status status = fruName.SelectFru(false);
  if (status == kSuccess) status = FruData::SelectAreaEnum(Id());
  if (status == kSuccess) status = FruData::SetAreaWriteMode(WriteMode());
  if (status == kSuccess) status = FruData::ValidateSelectedArea();
  if (status == kSuccess) parser_->SetTag(validateTag_);
  // An area that is not valid is an answer, not a failure. No field of it can be changed, nor may one that
  // follows change the area before it.
  index_ = FruAreaIndex::None;
  fruName.SetFruArea(this);
  return kSuccess;
}

bool CCfgFruArea::DoesAreaExistInFru(CCfgFruName& fruName) const {
  TraceScope scope("CCfgFruArea::DoesAreaExistInFru");
  bool isPresent = false;
  return index_ != FruAreaIndex::None && fruName.SelectFru(false) == kSuccess &&
         kHasArea[static_cast<std::size_t>(index_)](isPresent) == kSuccess && isPresent;
}

Status CCfgFruArea::Select(CCfgFruName& fruName) {
  Status status = fruName.SelectFru(false);
  if (status == kSuccess) status = FruData::SelectAreaEnum(Id());
  if (status == kSuccess) status = FruData::SetAreaWriteMode(WriteMode());
  if (status != kSuccess) return ReportFailure(cfg_status::kBadFruArea);
  fruName.SetFruArea(this);
  return kSuccess;
}

Status CCfgFruArea::Resize(CCfgFruName& fruName) {
  constexpr std::uint32_t kUnit = 8;
  if (size_ % kUnit != 0) {
    size_ += kUnit - size_ % kUnit;
    DisplayWide("\nArea size should be a multiple of 8. Rounding area size to %d...", size_);
  }
  if (FruData::ResizeFruArea(size_) != kSuccess) {
    CCfgParser::SetLastError("Failed to resize FRU Area.");
    return ReportFailure(cfg_status::kResizeFailed);
  }
  fruName.MarkModified();
  return kSuccess;
}

/// The internal use area or one record, from the FRU to read from to the FRU to change.
Status CCfgFruArea::CopyWhole(CCfgFruName& fruName) {
  fruName.MarkModified();
  std::vector<std::uint8_t> bytes;
  if (Status status = ReadWhole(fruName, bytes); status != kSuccess) return ReportFailure(status);
  Status status = fruName.SelectFru(false);
  if (status == kSuccess) status = FruData::SelectAreaEnum(Id());
  if (status == kSuccess && index_ == FruAreaIndex::MultiRec &&
      FruData::SelectMultiRecNum(recordNumber_) != kSuccess) {
    Print("\nInvalid MultiRecord Number.\n");
    return ReportFailure(cfg_status::kBadMultiRecord);
  }
  if (status == kSuccess)
    status = FruData::SetAreaData(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  if (status == kSuccess) return kSuccess;
  return ReportFailure(index_ == FruAreaIndex::MultiRec ? cfg_status::kBadMultiRecord
                                                        : cfg_status::kBadFruArea);
}

Status CCfgFruArea::ReadWhole(CCfgFruName& fruName, std::vector<std::uint8_t>& bytes) {
  bool isRecord = index_ == FruAreaIndex::MultiRec;
  Status failure = isRecord ? cfg_status::kBadMultiRecord : cfg_status::kBadFruArea;
  Status status = fruName.SelectFru(true);
  if (status == kSuccess) status = FruData::SelectAreaEnum(Id());
  if (status == kSuccess && isRecord) status = FruData::SelectMultiRecNum(recordNumber_);
  std::uint32_t size = 0;
  if (status == kSuccess) status = FruData::GetAreaSize(size);
  if (status != kSuccess) return failure;
  bytes.resize(size);
  status = FruData::GetAreaData(bytes.data(), size);
  bytes.resize(std::min<std::size_t>(size, bytes.size()));
  return status == kSuccess ? kSuccess : failure;
}

}  // namespace varnok
