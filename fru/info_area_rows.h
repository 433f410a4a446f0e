// The fields of the chassis, board and product info areas, a row each (FRU storage definition v1.0, sections
// 10 to 12). Parsing, lookup, messages, trace, display and room all follow from the rows: a new field is one
// row.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

#include "fru/fru_encoding.h"
#include "fru/fru_types.h"

namespace varnok {

/// A field with a type/length byte. The rows of an area stand in the order of its bytes.
struct InfoFieldRow {
  FruFieldId id;
  const char* label;        ///< in the display
  const char* messageName;  ///< in last-error texts; null where the area reports none
  const char* name;         ///< of its operations in trace lines: Get*, Get*TL, Set*
};

inline constexpr InfoFieldRow kChassisFields[] = {
    {FruFieldId::ChassisPartNumber, "Part Number", {}, "PartNumber"},
    {FruFieldId::ChassisSerialNumber, "Serial Number", {}, "SerialNumber"},
};
inline constexpr InfoFieldRow kBoardFields[] = {
    {FruFieldId::BoardManufacturer, "Manufacturer Name", "Board Manufacturer Name", "Manufacturer"},
    {FruFieldId::BoardProductName, "Product Name", "Board Product Name", "ProductName"},
    {FruFieldId::BoardSerialNumber, "Serial Number", "Board Serial Number", "SerialNumber"},
    {FruFieldId::BoardPartNumber, "Part Number", "Board Part Number", "PartNumber"},
    {FruFieldId::BoardFruFileId, "Mftr FRU File ID", "FRU File ID", "FileId"},
};
inline constexpr InfoFieldRow kProductFields[] = {
    {FruFieldId::ProductManufacturer, "Manufacturer Name", "Product Manufacturer Name", "ManufacturerName"},
    {FruFieldId::ProductName, "Product Name", "Product Name", "ProductName"},
    {FruFieldId::ProductPartNumber, "Part Number", "Product Part/Model Number", "PartNumber"},
    {FruFieldId::ProductVersion, "Product Version", "Product Version", "Version"},
    {FruFieldId::ProductSerialNumber, "Serial Number", "Product Serial Number", "SerialNumber"},
    {FruFieldId::ProductAssetTag, "Asset Tag", "Asset Tag", "AssetTag"},
    {FruFieldId::ProductFruFileId, "Mftr FRU File ID", "FRU File ID", "FileId"},
};

/// The field at index 0 that has no type/length byte: the chassis type, the board's manufacturing date.
struct InfoFixedFieldRow {
  FruFieldId id;
  std::size_t offset;  ///< within the fixed bytes
  std::size_t length;  ///< 0: the area has no such field
  std::uint8_t least;  ///< of a field of one byte
  std::uint8_t most;
  bool marksModified;     ///< whether setting it marks the area
  const char* message;    ///< last error of a failed setting
  const char* traceText;  ///< trace line of a failed setting
};

struct InfoAreaLayout {
  const char* className;
  std::size_t fixedLength;    ///< bytes between the length byte and the first field
  std::size_t minimumLength;  ///< bytes that parsing asks for
  InfoFixedFieldRow fixedField;
  std::span<const InfoFieldRow> fields;
  const char* customFieldName;
  bool reportsErrors;  ///< whether failed setters set the last-error text
  bool tracesInvalidSelection;
  const char* tooLongTrace;

  /// The index of the first field with a type/length byte.
  constexpr std::uint32_t FirstRowIndex() const { return fixedField.length != 0 ? 1 : 0; }
  /// The index of the first custom field, which is the number of fields that have a number of their own.
  constexpr std::uint32_t FirstCustomIndex() const {
    return FirstRowIndex() + static_cast<std::uint32_t>(fields.size());
  }
  /// The bytes of the area with every field empty: version, length, fixed bytes, fields, end marker,
  /// checksum.
  constexpr std::size_t LeastLength() const { return 4 + fixedLength + fields.size(); }
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
inline constexpr InfoAreaLayout kBoardLayout{
    .className = "CBoardInfoArea",
    .fixedLength = 4,
    .minimumLength = 7,
    // Kept: a new date does not mark the area; a date alone is no reason to write.
    .fixedField = {FruFieldId::BoardMfgDateTime, 1, 3, 0, 0xFF, false, "Invalid Manufacturing Date/Time.",
                   "Invalid Mfg Date Time"},
    .fields = kBoardFields,
    .customFieldName = "Board Custom Field",
    .reportsErrors = true,
    .tracesInvalidSelection = true,
    .tooLongTrace = "FRU Data too long",
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

inline constexpr std::size_t kMaxInfoFields =
    std::max({std::size(kChassisFields), std::size(kBoardFields), std::size(kProductFields)});
inline constexpr std::size_t kMaxInfoFixedBytes =
    std::max({kChassisLayout.fixedLength, kBoardLayout.fixedLength, kProductLayout.fixedLength});

// What the compiler holds of a new row.
static_assert(std::max({kChassisLayout.LeastLength(), kBoardLayout.LeastLength(),
                        kProductLayout.LeastLength()}) <= kMaxAreaLength);
consteval std::size_t RowsOf(FruFieldId id) {
  std::size_t rows = 0;
  for (const InfoAreaLayout* layout : {&kChassisLayout, &kBoardLayout, &kProductLayout}) {
    if (layout->fixedField.length != 0 && layout->fixedField.id == id) ++rows;
    for (const InfoFieldRow& row : layout->fields) rows += row.id == id ? 1 : 0;
  }
  return rows;
}
consteval bool HasEachNumberOneRow() {
  std::size_t count =
      kChassisLayout.FirstCustomIndex() + kBoardLayout.FirstCustomIndex() + kProductLayout.FirstCustomIndex();
  auto number = static_cast<std::uint32_t>(FruFieldId::ChassisType);
  for (; number < static_cast<std::uint32_t>(FruFieldId::End); ++number, --count)
    if (RowsOf(FruFieldId{number}) != 1) return false;
  return count == 0;
}
static_assert(HasEachNumberOneRow(),
              "each number of FruFieldId has one row, and each row a number of its own");

}  // namespace varnok
