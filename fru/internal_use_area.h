// The internal use area of a FRU image: bytes of the board's own (FRU storage definition v1.0, section 9).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "fru/fru_types.h"

namespace varnok {

class CInternalUseArea {
 public:
  /// 1 when the area holds bytes, else 0.
  std::uint32_t GetNumberOfFields() const;
  /// 0 for InternalUseData, else kInvalidFieldIndex.
  std::uint32_t GetFieldIndexFromEnum(FruFieldId field) const;
  /// Replaces the whole area, format version byte included. False, with nothing changed, past 512 bytes.
  bool SetData(std::span<const std::uint8_t> bytes, bool markModified);
  std::span<const std::uint8_t> GetData() const;
  std::size_t GetLength() const;
  FruWriteMode WriteMode() const { return writeMode_; }
  void SetWriteMode(FruWriteMode mode) { writeMode_ = mode; }
  bool IsModified() const { return isModified_; }
  void ClearModified() { isModified_ = false; }

 private:
  std::array<std::uint8_t, kMaxAreaLength> buffer_{};
  std::size_t length_ = 0;
  bool isModified_ = false;
  FruWriteMode writeMode_ = FruWriteMode::WriteAndVerify;
};

}  // namespace varnok
