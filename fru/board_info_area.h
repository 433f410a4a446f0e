// The board info area (FRU storage definition v1.0, section 11).
#pragma once

#include "fru/info_area.h"

namespace varnok {

inline constexpr InfoFieldRow kBoardFields[] = {
    {FruFieldId::BoardManufacturer, "Board Manufacturer Name", "SetManufacturer"},
    {FruFieldId::BoardProductName, "Board Product Name", "SetProductName"},
    {FruFieldId::BoardSerialNumber, "Board Serial Number", "SetSerialNumber"},
    {FruFieldId::BoardPartNumber, "Board Part Number", "SetPartNumber"},
    {FruFieldId::BoardFruFileId, "FRU File ID", "SetFileId"},
};

inline constexpr InfoAreaLayout kBoardLayout{
    .className = "CBoardInfoArea",
    .fixedLength = 4,
    .minimumLength = 7,
    .fixedField = {FruFieldId::BoardMfgDateTime, 1, 3, 0, 0xFF, false, "Invalid Manufacturing Date/Time.",
                   "Invalid Mfg Date Time"},
    .fields = kBoardFields,
    .customFieldName = "Board Custom Field",
    .reportsErrors = true,
    .tracesInvalidSelection = true,
    .tooLongTrace = "FRU Data too long",
};

class CBoardInfoArea : public InfoArea {
 public:
  CBoardInfoArea() : InfoArea(kBoardLayout) {}

  std::uint8_t GetLanguageCode() const { return FixedByte(0); }
  /// Three bytes: minutes since 0:00 of 1 January 1996, least significant byte first.
  std::span<const std::uint8_t> GetMfgDateTime() const { return FixedField(); }
  /// Needs exactly three bytes.
  bool SetMfgDateTime(std::span<const std::uint8_t> bytes) { return SetFixedField(bytes); }

  std::uint8_t GetManufacturerTL() const { return RowTypeLength(0); }
  std::span<const std::uint8_t> GetManufacturer() const { return RowData(0); }
  bool SetManufacturer(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(0, data, typeBits);
  }
  std::uint8_t GetProductNameTL() const { return RowTypeLength(1); }
  std::span<const std::uint8_t> GetProductName() const { return RowData(1); }
  bool SetProductName(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(1, data, typeBits);
  }
  std::uint8_t GetSerialNumberTL() const { return RowTypeLength(2); }
  std::span<const std::uint8_t> GetSerialNumber() const { return RowData(2); }
  bool SetSerialNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(2, data, typeBits);
  }
  std::uint8_t GetPartNumberTL() const { return RowTypeLength(3); }
  std::span<const std::uint8_t> GetPartNumber() const { return RowData(3); }
  bool SetPartNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(3, data, typeBits);
  }
  std::uint8_t GetFileIdTL() const { return RowTypeLength(4); }
  std::span<const std::uint8_t> GetFileId() const { return RowData(4); }
  bool SetFileId(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(4, data, typeBits);
  }
};

}  // namespace varnok
