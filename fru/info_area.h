// The pattern of the chassis, board and product info areas (FRU storage definition v1.0, sections 10 to 12):
// format version, length, fixed bytes, fields, custom fields, end marker, zero padding, checksum. The three
// areas differ in their layout and its rows; operations named after a field stand in a header for each area.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "firmware/pool.h"
#include "firmware/pool_list.h"
#include "firmware/pool_text.h"
#include "firmware/status.h"
#include "fru/fru_encoding.h"
#include "fru/fru_types.h"
#include "fru/info_area_rows.h"

namespace varnok {

class InfoArea {
 public:
  const InfoAreaLayout& Layout() const { return *layout_; }
  /// True when all bytes of the area sum to 0 modulo 256.
  bool IsValid() const;
  /// Fixed fields and custom fields.
  std::uint32_t GetNumberOfFields() const;
  /// The index of one of the area's own fixed fields, else kInvalidFieldIndex.
  std::uint32_t GetFieldIndexFromEnum(FruFieldId field) const;
  std::uint8_t GetFormatVersion() const;
  /// In bytes; may exceed 512 after SetLength.
  std::size_t GetLength() const;
  std::uint8_t GetChecksum() const;
  std::uint32_t GetNumberOfCustomFields() const;
  /// Free bytes of the area; below 0 when its length was set below what its fields need.
  std::ptrdiff_t GetPadLength() const;
  FruWriteMode WriteMode() const { return writeMode_; }
  void SetWriteMode(FruWriteMode mode) { writeMode_ = mode; }
  bool IsModified() const { return isModified_; }
  void ClearModified() { isModified_ = false; }

  /// Parses the area: the whole of it, or its bytes up to the end marker, which then get padding and
  /// checksum. After a failure the fields parsed before it are kept.
  bool SetData(std::span<const std::uint8_t> bytes);
  /// Takes what parsing a device's area will need that is to be compared with `image`: all of an area that is
  /// the same, enough of any other to differ. False when the pool is exhausted.
  bool ReserveFor(const InfoArea& image);
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
  void SetChecksum(std::uint8_t checksum);
  void UpdateChecksum();

 protected:
  explicit InfoArea(const InfoAreaLayout& layout) : layout_(&layout) {}

  // The parts that single areas name, under the names of their operations.
  std::uint8_t FixedByte(const char* operation, std::size_t offset) const;
  std::span<const std::uint8_t> FixedField(const char* operation) const;
  bool SetFixedField(const char* operation, std::span<const std::uint8_t> data);
  std::uint8_t TypeLengthOf(FruFieldId field) const;
  std::span<const std::uint8_t> DataOf(FruFieldId field) const;
  bool SetDataOf(FruFieldId field, std::span<const std::uint8_t> data, std::uint8_t typeBits);

 private:
  struct Field {
    std::uint8_t typeLength = 0;
    PoolBuffer data;      ///< the bytes and a terminating zero
    PoolBuffer reserved;  ///< for the next data
    std::span<const std::uint8_t> Bytes() const {
      if (!data.IsAllocated()) return {};
      return data.Bytes().first(FruDefs::DecodeLength(typeLength));
    }
  };

  std::size_t RowOf(FruFieldId field) const;
  std::size_t Length() const { return lengthUnits_ * FruDefs::kUnit; }
  std::ptrdiff_t PadLength() const;
  std::span<const std::uint8_t> FixedFieldBytes() const;
  bool StoreFixedField(std::span<const std::uint8_t> data);
  bool SetRow(std::size_t row, std::span<const std::uint8_t> data, std::uint8_t typeBits);
  std::span<const Field> Rows() const { return std::span(fields_).first(layout_->fields.size()); }
  std::uint8_t SumWithoutChecksum() const;

  bool ParseFraming(std::span<const std::uint8_t> bytes, std::size_t& position);
  bool ParseField(std::span<const std::uint8_t> bytes, std::size_t& position, Field& field);
  bool ParseCustomField(std::span<const std::uint8_t> bytes, std::size_t& position);
  bool ParseEnd(std::span<const std::uint8_t> bytes, std::size_t position);
  bool HasRoom(std::uint8_t oldTypeLength, std::size_t newLength) const;
  void Report(const char* text) const;
  void ReportTooLong(const char* field) const;
  bool FailRow(const InfoFieldRow& row, const char* what) const;

  const InfoAreaLayout* layout_;
  PoolList<CustomField> customFields_;
  FruWriteMode writeMode_ = FruWriteMode::WriteAndVerify;
  std::uint8_t formatVersion_ = 0;
  std::uint8_t lengthUnits_ = 0;
  std::array<std::uint8_t, kMaxInfoFixedBytes> fixedBytes_{};
  std::array<Field, kMaxInfoFields> fields_;
  std::uint8_t checksum_ = 0;
  bool isModified_ = false;
  std::array<std::uint8_t, kMaxAreaLength> buffer_{};
};

}  // namespace varnok
