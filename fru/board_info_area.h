// The board info area (FRU storage definition v1.0, section 11).
#pragma once

#include "fru/info_area.h"

namespace varnok {

class CBoardInfoArea : public InfoArea {
 public:
  CBoardInfoArea() : InfoArea(kBoardLayout) {}

  std::uint8_t GetLanguageCode() const { return FixedByte("GetLanguageCode", 0); }
  /// Three bytes: minutes since 0:00 of 1 January 1996, least significant byte first.
  std::span<const std::uint8_t> GetMfgDateTime() const { return FixedField("GetMfgDateTime"); }
  /// Needs exactly three bytes.
  bool SetMfgDateTime(std::span<const std::uint8_t> bytes) { return SetFixedField("SetMfgDateTime", bytes); }

  std::uint8_t GetManufacturerTL() const { return TypeLengthOf(FruFieldId::BoardManufacturer); }
  std::span<const std::uint8_t> GetManufacturer() const { return DataOf(FruFieldId::BoardManufacturer); }
  bool SetManufacturer(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::BoardManufacturer, data, typeBits);
  }
  std::uint8_t GetProductNameTL() const { return TypeLengthOf(FruFieldId::BoardProductName); }
  std::span<const std::uint8_t> GetProductName() const { return DataOf(FruFieldId::BoardProductName); }
  bool SetProductName(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::BoardProductName, data, typeBits);
  }
  std::uint8_t GetSerialNumberTL() const { return TypeLengthOf(FruFieldId::BoardSerialNumber); }
  std::span<const std::uint8_t> GetSerialNumber() const { return DataOf(FruFieldId::BoardSerialNumber); }
  bool SetSerialNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::BoardSerialNumber, data, typeBits);
  }
  std::uint8_t GetPartNumberTL() const { return TypeLengthOf(FruFieldId::BoardPartNumber); }
  std::span<const std::uint8_t> GetPartNumber() const { return DataOf(FruFieldId::BoardPartNumber); }
  bool SetPartNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::BoardPartNumber, data, typeBits);
  }
  std::uint8_t GetFileIdTL() const { return TypeLengthOf(FruFieldId::BoardFruFileId); }
  std::span<const std::uint8_t> GetFileId() const { return DataOf(FruFieldId::BoardFruFileId); }
  bool SetFileId(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::BoardFruFileId, data, typeBits);
  }
};

}  // namespace varnok
