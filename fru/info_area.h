// The pattern of the chassis, board and product info areas (FRU storage definition v1.0, sections 10 to 12):
// format version, length, fixed bytes, fields, custom fields, end marker, zero padding, checksum. The three
// areas differ in the rows of their layout; their named accessors stand in a header of their own each.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "firmware/pool.h"
#include "firmware/status.h"
#include "fru/fru_encoding.h"
#include "fru/fru_types.h"
#include "fru/pool_list.h"
#include "fru/pool_text.h"

namespace varnok {

/// A field with a type/length byte.
struct InfoFieldRow {
  FruFieldId id;
  const char* messageName;  ///< in last-error texts
  const char* setterName;   ///< in trace lines
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
};

class InfoArea {
 public:
  /// True when all bytes of the area sum to 0 modulo 256.
  bool IsValid() const;
  /// Fixed fields and custom fields.
  std::uint32_t GetNumberOfFields() const;
  /// The index of one of the area's own fixed fields, else kInvalidFieldIndex.
  std::uint32_t GetFieldIndexFromEnum(FruFieldId field) const;
  std::uint8_t GetFormatVersion() const { return formatVersion_; }
  /// In bytes; may exceed 512 after SetLength.
  std::size_t GetLength() const { return lengthUnits_ * FruDefs::kUnit; }
  std::uint8_t GetChecksum() const { return checksum_; }
  std::uint32_t GetNumberOfCustomFields() const { return static_cast<std::uint32_t>(customFields_.size()); }
  /// Free bytes of the area; below 0 when its length was set below what its fields need.
  std::ptrdiff_t GetPadLength() const;
  FruWriteMode WriteMode() const { return writeMode_; }
  void SetWriteMode(FruWriteMode mode) { writeMode_ = mode; }
  bool IsModified() const { return isModified_; }
  void ClearModified() { isModified_ = false; }

  /// Parses the area: the whole of it, or its bytes up to the end marker, which then get padding and
  /// checksum. After a failure the fields parsed before it are kept.
  bool SetData(std::span<const std::uint8_t> bytes);
  /// The serialised area in a buffer of 512 bytes, valid until the next call.
  std::span<const std::uint8_t> GetData();

  /// A view of a field's bytes; null with length 0 and false past the last custom field.
  bool GetFieldData(std::uint32_t index, std::span<const std::uint8_t>& data) const;
  /// The type/length byte of a field that has one; 0 for any other index.
  std::uint8_t GetFieldTypeLength(std::uint32_t index) const;
  /// A widened copy of custom field `k` up to its first zero byte. kNoSuchItem, kUnexpected or kOutOfMemory.
  Status GetCustomField(std::uint32_t k, PoolText& text) const;
  struct CustomField {
    std::uint8_t typeLength = 0;
    std::array<std::uint8_t, kMaxAreaLength> data{};
    std::span<const std::uint8_t> Bytes() const {
      return std::span(data).first(FruDefs::DecodeLength(typeLength));
    }
  };
  const PoolList<CustomField>& CustomFields() const { return customFields_; }

  /// Sets a field by its index. `typeBits` is the type code in bits 7-6. A failure leaves the field as it
  /// was.
  bool SetFieldData(std::uint32_t index, std::span<const std::uint8_t> data, std::uint8_t typeBits);
  bool SetCustomField(std::uint32_t k, std::span<const std::uint8_t> data, std::uint8_t typeBits);
  /// Refuses a number of bytes that is not a multiple of 8. Keeps the count of units modulo 256.
  bool SetLength(std::size_t bytes);
  void SetChecksum(std::uint8_t checksum) { checksum_ = checksum; }
  void UpdateChecksum();

 protected:
  explicit InfoArea(const InfoAreaLayout& layout) : layout_(&layout) {}

  std::uint8_t FixedByte(std::size_t offset) const { return fixedBytes_[offset]; }
  std::span<const std::uint8_t> FixedField() const;
  bool SetFixedField(std::span<const std::uint8_t> data);
  /// By row of the layout.
  std::uint8_t RowTypeLength(std::size_t row) const { return fields_[row].typeLength; }
  std::span<const std::uint8_t> RowData(std::size_t row) const { return fields_[row].Bytes(); }
  bool SetRow(std::size_t row, std::span<const std::uint8_t> data, std::uint8_t typeBits);

 private:
  static constexpr std::size_t kMaxFields = 7;
  static constexpr std::size_t kMaxFixedBytes = 4;

  struct Field {
    std::uint8_t typeLength = 0;
    PoolBuffer data;  ///< the bytes and a terminating zero
    std::span<const std::uint8_t> Bytes() const {
      if (!data.IsAllocated()) return {};
      return data.Bytes().first(FruDefs::DecodeLength(typeLength));
    }
  };

  std::size_t FirstRowIndex() const { return layout_->fixedField.length != 0 ? 1 : 0; }
  std::size_t FirstCustomIndex() const { return FirstRowIndex() + layout_->fields.size(); }
  std::span<const Field> Rows() const { return std::span(fields_).first(layout_->fields.size()); }
  std::uint8_t SumWithoutChecksum() const;

  bool ParseFraming(std::span<const std::uint8_t> bytes, std::size_t& position);
  bool ParseField(std::span<const std::uint8_t> bytes, std::size_t& position, Field& field);
  bool ParseCustomField(std::span<const std::uint8_t> bytes, std::size_t& position);
  bool ParseEnd(std::span<const std::uint8_t> bytes, std::size_t position);
  bool HasRoom(std::uint8_t oldTypeLength, std::size_t newLength) const;
  void Report(const char* text) const;
  void ReportTooLong(const char* setter, const char* field) const;

  const InfoAreaLayout* layout_;
  PoolList<CustomField> customFields_;
  FruWriteMode writeMode_ = FruWriteMode::WriteAndVerify;
  std::uint8_t formatVersion_ = 0;
  std::uint8_t lengthUnits_ = 0;
  std::array<std::uint8_t, kMaxFixedBytes> fixedBytes_{};
  std::array<Field, kMaxFields> fields_;
  std::uint8_t checksum_ = 0;
  bool isModified_ = false;
  std::array<std::uint8_t, kMaxAreaLength> buffer_{};
};

}  // namespace varnok
