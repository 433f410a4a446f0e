// The product info area (FRU storage definition v1.0, section 12).
#pragma once

#include "fru/info_area.h"

namespace varnok {

class CProductInfoArea : public InfoArea {
 public:
  CProductInfoArea() : InfoArea(kProductLayout) {}

  std::uint8_t GetLanguageCode() const { return FixedByte("GetLanguageCode", 0); }

  std::uint8_t GetManufacturerNameTL() const { return TypeLengthOf(FruFieldId::ProductManufacturer); }
  std::span<const std::uint8_t> GetManufacturerName() const {
    return DataOf(FruFieldId::ProductManufacturer);
  }
  bool SetManufacturerName(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductManufacturer, data, typeBits);
  }
  std::uint8_t GetProductNameTL() const { return TypeLengthOf(FruFieldId::ProductName); }
  std::span<const std::uint8_t> GetProductName() const { return DataOf(FruFieldId::ProductName); }
  bool SetProductName(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductName, data, typeBits);
  }
  std::uint8_t GetPartNumberTL() const { return TypeLengthOf(FruFieldId::ProductPartNumber); }
  std::span<const std::uint8_t> GetPartNumber() const { return DataOf(FruFieldId::ProductPartNumber); }
  bool SetPartNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductPartNumber, data, typeBits);
  }
  std::uint8_t GetVersionTL() const { return TypeLengthOf(FruFieldId::ProductVersion); }
  std::span<const std::uint8_t> GetVersion() const { return DataOf(FruFieldId::ProductVersion); }
  bool SetVersion(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductVersion, data, typeBits);
  }
  std::uint8_t GetSerialNumberTL() const { return TypeLengthOf(FruFieldId::ProductSerialNumber); }
  std::span<const std::uint8_t> GetSerialNumber() const { return DataOf(FruFieldId::ProductSerialNumber); }
  bool SetSerialNumber(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductSerialNumber, data, typeBits);
  }
  std::uint8_t GetAssetTagTL() const { return TypeLengthOf(FruFieldId::ProductAssetTag); }
  std::span<const std::uint8_t> GetAssetTag() const { return DataOf(FruFieldId::ProductAssetTag); }
  bool SetAssetTag(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductAssetTag, data, typeBits);
  }
  std::uint8_t GetFileIdTL() const { return TypeLengthOf(FruFieldId::ProductFruFileId); }
  std::span<const std::uint8_t> GetFileId() const { return DataOf(FruFieldId::ProductFruFileId); }
  bool SetFileId(std::span<const std::uint8_t> data, std::uint8_t typeBits) {
    return SetDataOf(FruFieldId::ProductFruFileId, data, typeBits);
  }
};

}  // namespace varnok
