// One record of a multi-record area (FRU storage definition v1.0, section 16.1).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "firmware/pool_list.h"
#include "fru/fru_types.h"

namespace varnok {

struct MultiRecord {
  static constexpr std::size_t kHeaderLength = 5;
  static constexpr std::size_t kDataCapacity = 515;

  /// Type, flags and format version, data length, record checksum, header checksum.
  std::array<std::uint8_t, kHeaderLength> header{};
  std::array<std::uint8_t, kDataCapacity> data{};
  FruWriteMode writeMode = FruWriteMode::WriteAndVerify;

  std::uint8_t Type() const { return header[0]; }
  std::uint8_t FormatVersion() const { return header[1] & 0x0F; }
  bool IsLast() const { return (header[1] & 0x80) != 0; }
  /// Of the data, without the header.
  std::size_t Length() const { return header[2]; }
  std::span<const std::uint8_t> Data() const { return std::span(data).first(Length()); }
};

using MultiRecordList = PoolList<MultiRecord>;

}  // namespace varnok
