// Probes for FRU devices and their fields: IMBDEVICE, DS1624S and AT24C02; FRUFIELD.
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_area_command.h"
#include "cfg/fru_name_command.h"
#include "cfg/fru_tables.h"
#include "cfg/probe.h"
#include "fru/fru_data.h"

namespace varnok {
namespace {

constexpr std::size_t kCodeLength = 2;

/// Whether a device holds an IPMI FRU; the keyword is its kind of storage.
class CCfgProbeNvsType : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  std::uint8_t deviceId_ = 0;
  std::uint8_t lun_ = 0;
  std::uint8_t bus_ = 0xFF;
  std::uint8_t slave_ = kBmcAddress;
};

/// Whether a field of the FRUAREA that the script has selected begins with a text.
class CCfgProbeFru : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  bool IsInArea() const;
  Status SelectField() const;

  std::uint32_t field_ = fru_field::kNone;
  const CCfgFruName* fruName_ = nullptr;  ///< the block that the probe was read in, never looked into
  bool hasArea_ = false;                  ///< a FRUAREA of it stands before the probe
};

// --- IMBDEVICE, DS1624S, AT24C02 ---

Status CCfgProbeNvsType::ValidateParams() {
  if (Count() == 0) return Missing("first", cfg_status::kTooManyParameters);
  bool isImbDevice = GetProbeType() == ProbeType::ImbDevice;
  if (Status status = isImbDevice ? RequireCount(1, 3) : RequireCount(2, 2); status != kSuccess)
    return status;
  if (Status status = ReadBytes(Count()); status != kSuccess) return status;
  if (Count() == 1) {
    deviceId_ = p_[0];
  } else {
    std::size_t last = Count() - 1;
    lun_ = Count() == 3 ? p_[0] : lun_;
    bus_ = p_[last - 1];
    slave_ = p_[last];
  }
  return CheckDevice(bus_, slave_);
}

Status CCfgProbeNvsType::Ask(bool& isFound) {
  return ProbeFruHeader(lun_, slave_, bus_, deviceId_, isFound);
}

// --- FRUFIELD ---

Status CCfgProbeFru::ValidateParams() {
  if (Status status = RequireCount(2, 2); status != kSuccess) return status;
  std::string_view code = Parameter(0);
  if (code.size() != kCodeLength) {
    CCfgParser::SetLastError("\nThe input '%s' is invalid, the string cannot be longer than %d characters.\n",
                             Widen(code), kCodeLength);
    return cfg_status::kBadValue;
  }
  field_ = FindFruField(code);
  // An unknown field loads; it fails when it is selected.
  if (field_ == fru_field::kNone) CCfgParser::SetLastError("%s is not a valid FRU field.", code);
  fruName_ = parser_->CurrentFruName();
  hasArea_ = fruName_ != nullptr && fruName_->GetFruArea() != nullptr;
  return kSuccess;
}

/// Once the script is read, a FRUNAME knows the areas behind the probe too; those do not count. The block may
/// be another one than when the probe was read: a FRUNAME of a branch that was not taken is none.
bool CCfgProbeFru::IsInArea() const {
  const CCfgFruName* current = parser_->CurrentFruName();
  if (fruName_ == nullptr || current == nullptr || current->GetFruArea() == nullptr) return false;
  return hasArea_ || current != fruName_;
}

Status CCfgProbeFru::SelectField() const {
  TraceScope scope("CCfgProbeFru::SelectField");
  CCfgFruArea& area = *parser_->CurrentFruName()->GetFruArea();
  Status status = FruData::SelectAreaEnum(area.Id());
  if (status != kSuccess) return status;
  // Without a number of their own, the custom fields are represented by the first.
  if (field_ == fru_field::kCustom)
    return FruData::SelectFieldInteger(CustomFruFieldOffset(area.Index()) + 1);
  std::optional<FruFieldId> field;
  if (field_ != fru_field::kNone) field = FixedFruField(kFruFields[field_], area.Index());
  return FruData::SelectFieldEnum(field.value_or(FruFieldId{}));
}

Status CCfgProbeFru::Ask(bool& isFound) {
  if (!IsInArea()) {
    CCfgParser::SetLastError("Select an area before performing the probe operation.");
    return cfg_status::kOutOfBlock;
  }
  ForgetFruMessage();
  if (Status status = SelectField(); status != kSuccess) {
    Trace("CCfgProbeFru::SelectField- ERROR! FRU update error.", 1);
    return ReportFruFailure(status);
  }
  const std::uint8_t* data = nullptr;
  std::uint32_t length = 0;
  if (Status status = FruData::GetFieldDataValue(data, length); status != kSuccess)
    return ReportFruFailure(status);
  std::string_view text = Parameter(1);
  std::string value(data, data + length);
  isFound = EqualsIgnoreCase(std::string_view(value).substr(0, text.size()), text);
  return kSuccess;
}

}  // namespace

ProbeFamily FruProbes() {
  static constexpr ProbeRow kRows[] = {
      {ProbeType::ImbDevice, "IMBDEVICE", "CCfgProbeNvsType", MakeProbe<CCfgProbeNvsType>},
      {ProbeType::Ds1624s, "DS1624S", "CCfgProbeNvsType", MakeProbe<CCfgProbeNvsType>},
      {ProbeType::At24c02, "AT24C02", "CCfgProbeNvsType", MakeProbe<CCfgProbeNvsType>},
      {ProbeType{22}, "FRUFIELD", "CCfgProbeFru", MakeProbe<CCfgProbeFru>},
  };
  return kRows;
}

}  // namespace varnok
