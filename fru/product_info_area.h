// The product info area (FRU storage definition v1.0, section 12).
#pragma once

#include "fru/info_area.h"

namespace varnok {

inline constexpr InfoFieldRow kProductFields[] = {
    {FruFieldId::ProductManufacturer, "Product Manufacturer Name", "SetManufacturerName"},
    {FruFieldId::ProductName, "Product Name", "SetProductName"},
    {FruFieldId::ProductPartNumber, "Product Part/Model Number", "SetPartNumber"},
    {FruFieldId::ProductVersion, "Product Version", "SetVersion"},
    {FruFieldId::ProductSerialNumber, "Product Serial Number", "SetSerialNumber"},
    {FruFieldId::ProductAssetTag, "Asset Tag", "SetAssetTag"},
    {FruFieldId::ProductFruFileId, "FRU File ID", "SetFileId"},
};

inline constexpr InfoAreaLayout kProductLayout{
    .className = "CProductInfoArea",
    .fixedLength = 1,
    .minimumLength = 3,
    .fixedField = {},
    .fields = kProductFields,
    .customFieldName = "Product Custom Field",
    .reportsErrors = true,
    .tracesInvalidSelection = false,
    .tooLongTrace = "FRU Data Too Long",
};

class CProductInfoArea : public InfoArea {
 public:
  CProductInfoArea() : InfoArea(kProductLayout) {}

  std::uint8_t GetLanguageCode() const { return FixedByte(0); }

  std::uint8_t GetManufacturerNameTL() const { return RowTypeLength(0); }
  std::span<const std::uint8_t> GetManufacturerName() const { return RowData(0); }
  bool SetManufacturerName(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(0, data, typeBits);
  }
  std::uint8_t GetProductNameTL() const { return RowTypeLength(1); }
  std::span<const std::uint8_t> GetProductName() const { return RowData(1); }
  bool SetProductName(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(1, data, typeBits);
  }
  std::uint8_t GetPartNumberTL() const { return RowTypeLength(2); }
  std::span<const std::uint8_t> GetPartNumber() const { return RowData(2); }
  bool SetPartNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(2, data, typeBits);
  }
  std::uint8_t GetVersionTL() const { return RowTypeLength(3); }
  std::span<const std::uint8_t> GetVersion() const { return RowData(3); }
  bool SetVersion(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(3, data, typeBits);
  }
  std::uint8_t GetSerialNumberTL() const { return RowTypeLength(4); }
  std::span<const std::uint8_t> GetSerialNumber() const { return RowData(4); }
  bool SetSerialNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(4, data, typeBits);
  }
  std::uint8_t GetAssetTagTL() const { return RowTypeLength(5); }
  std::span<const std::uint8_t> GetAssetTag() const { return RowData(5); }
  bool SetAssetTag(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(5, data, typeBits);
  }
  std::uint8_t GetFileIdTL() const { return RowTypeLength(6); }
  std::span<const std::uint8_t> GetFileId() const { return RowData(6); }
  bool SetFileId(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetRow(6, data, typeBits);
  }
};

}  // namespace varnok
