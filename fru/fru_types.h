// Numbers by which the rest of the program names areas, fields and encodings of a FRU image.
#pragma once

#include <cstddef>
#include <cstdint>

namespace varnok {

/// The areas of a FRU image.
enum class FruAreaId : std::uint32_t {
  None = 0,
  CommonHeaderArea = 1,
  InternalUseArea = 2,
  ChassisInfoArea = 3,
  BoardInfoArea = 4,
  ProductInfoArea = 5,
  MultiRecordArea = 6,
};

/// The fixed fields of a FRU image. Custom fields have no number of their own; they are reached by index.
enum class FruFieldId : std::uint32_t {
  InternalUseData = 1,
  ChassisType = 2,
  ChassisPartNumber = 3,
  ChassisSerialNumber = 4,
  BoardMfgDateTime = 5,
  BoardManufacturer = 6,
  BoardProductName = 7,
  BoardSerialNumber = 8,
  BoardPartNumber = 9,
  BoardFruFileId = 10,
  ProductManufacturer = 11,
  ProductName = 12,
  ProductPartNumber = 13,
  ProductVersion = 14,
  ProductSerialNumber = 15,
  ProductAssetTag = 16,
  ProductFruFileId = 17,
  End,  ///< behind the last number
};

/// Bits 7-6 of a type/length byte (FRU storage definition v1.0, section 13).
enum class FruFieldType : std::uint8_t {
  Binary = 0,
  BcdPlus = 1,
  SixBitAscii = 2,
  Text = 3,  ///< Kept: 8-bit whatever the language code says; so are the files that it comes from
};

/// What a commit does with an area. The values are those that scripts' area commands use.
enum class FruWriteMode : std::uint32_t {
  WriteAndVerify = 0,
  Skip = 1,    ///< neither written nor verified
  Verify = 2,  ///< not written, but compared with the device, and announced
};

/// The lists of images that the manager keeps.
enum class FruList : std::uint32_t {
  None = 0,
  System = 1,  ///< read from devices
  File = 2,    ///< read from FRU files
};

/// The index that stands for no field.
inline constexpr std::uint32_t kInvalidFieldIndex = 0xFFFFFFFF;

/// The record number that stands for every record of a multi-record area.
inline constexpr std::uint32_t kAllMultiRecords = 255;

/// The most bytes that an area can have. Kept: the devices that are programmed, and their files, have no
/// more.
inline constexpr std::size_t kMaxAreaLength = 512;

}  // namespace varnok
