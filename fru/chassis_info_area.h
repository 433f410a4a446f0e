// The chassis info area (FRU storage definition v1.0, section 10).
#pragma once

#include "fru/info_area.h"

namespace varnok {

inline constexpr InfoFieldRow kChassisFields[] = {
    {FruFieldId::ChassisPartNumber, {}, "SetPartNumber"},
    {FruFieldId::ChassisSerialNumber, {}, "SetSerialNumber"},
};

inline constexpr InfoAreaLayout kChassisLayout{
    .className = "CChassisInfoArea",
    .fixedLength = 1,
    .minimumLength = 3,
    .fixedField = {FruFieldId::ChassisType, 0, 1, 1, 29, true, {}, "Invalid Chassis Type"},
    .fields = kChassisFields,
    .customFieldName = {},
    .reportsErrors = false,
    .tracesInvalidSelection = false,
    .tooLongTrace = "FRU Data too long",
};

class CChassisInfoArea : public InfoArea {
 public:
  CChassisInfoArea() : InfoArea(kChassisLayout) {}

  std::uint8_t GetType() const { return FixedByte(0); }
  /// Refuses any type but 1 to 29.
  bool SetType(std::uint8_t type) { return SetFixedField({&type, 1}); }

  std::uint8_t GetPartNumberTL() const { return RowTypeLength(0); }
  std::span<const std::uint8_t> GetPartNumber() const { return RowData(0); }
  bool SetPartNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(0, data, typeBits);
  }
  std::uint8_t GetSerialNumberTL() const { return RowTypeLength(1); }
  std::span<const std::uint8_t> GetSerialNumber() const { return RowData(1); }
  bool SetSerialNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(1, data, typeBits);
  }
};

}  // namespace varnok
