// The common header of a FRU image: where each area starts (FRU storage definition v1.0, section 8).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "fru/fru_types.h"

namespace varnok {

class CFruHeader {
 public:
  static constexpr std::size_t kLength = 8;

  /// True when the eight bytes sum to 0 modulo 256.
  bool IsValid() const;
  std::span<const std::uint8_t, kLength> GetData() const;
  std::size_t GetLength() const;
  /// Takes the bytes as they are, checksum included.
  void SetData(std::span<const std::uint8_t, kLength> bytes);

  std::uint8_t FormatVersion() const { return bytes_[0]; }
  std::uint8_t Pad() const { return bytes_[6]; }
  std::uint8_t Checksum() const { return bytes_[7]; }
  /// True for format version 1. Kept: the upper five bits do not count; boards with bits set there are in
  /// use.
  bool IsIpmiFru() const { return (FormatVersion() & 7) == 1; }

  /// The offset byte of one of the five areas, in 8-byte units; 0 = absent.
  std::uint8_t Offset(FruAreaId area) const { return bytes_[OffsetIndex(area)]; }
  void SetOffset(FruAreaId area, std::uint8_t offset) { bytes_[OffsetIndex(area)] = offset; }
  void UpdateChecksum();

 private:
  // The areas stand in the header in the order of their numbers.
  static std::size_t OffsetIndex(FruAreaId area) { return static_cast<std::size_t>(area) - 1; }

  std::array<std::uint8_t, kLength> bytes_{};
};

}  // namespace varnok
