// The chassis info area (FRU storage definition v1.0, section 10).
#pragma once

#include "fru/info_area.h"

namespace varnok {

class CChassisInfoArea : public InfoArea {
 public:
  CChassisInfoArea() : InfoArea(kChassisLayout) {}

  std::uint8_t GetType() const { return FixedByte("GetType", 0); }
  /// Refuses any type but 1 to 29.
  bool SetType(std::uint8_t type) { return SetFixedField("SetType", {&type, 1}); }

  std::uint8_t GetPartNumberTL() const { return TypeLengthOf(FruFieldId::ChassisPartNumber); }
  std::span<const std::uint8_t> GetPartNumber() const { return DataOf(FruFieldId::ChassisPartNumber); }
  bool SetPartNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ChassisPartNumber, data, typeBits);
  }
  std::uint8_t GetSerialNumberTL() const { return TypeLengthOf(FruFieldId::ChassisSerialNumber); }
  std::span<const std::uint8_t> GetSerialNumber() const { return DataOf(FruFieldId::ChassisSerialNumber); }
  bool SetSerialNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ChassisSerialNumber, data, typeBits);
  }
};

}  // namespace varnok
