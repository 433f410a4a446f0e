// Byte rules that all areas of a FRU image share: type/length bytes, the end marker, checksums and packed
// text (IPMI Platform Management FRU Information Storage Definition v1.0, sections 8, 13 and 17).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "fru/fru_types.h"

namespace varnok {

namespace FruDefs {

/// Ends the field list of an info area; never a field of one text character.
inline constexpr std::uint8_t kEndOfFields = 0xC1;
/// The most data bytes that a type/length byte can count.
inline constexpr std::size_t kMaxFieldLength = 63;
/// Offsets and area lengths are counted in units of 8 bytes.
inline constexpr std::size_t kUnit = 8;

constexpr std::uint8_t DecodeLength(std::uint8_t typeLength) {
  return typeLength & 0x3F;
}
constexpr FruFieldType DecodeType(std::uint8_t typeLength) {
  return static_cast<FruFieldType>(typeLength >> 6);
}

}  // namespace FruDefs

/// The 8-bit sum.
std::uint8_t SumOf(std::span<const std::uint8_t> bytes);

/// Unpacks 6-bit ASCII into characters 20h to 5Fh. The input ends at its first zero byte. Bits are
/// taken most significant first, the reverse of the standard, so that images written by this program read
/// back the same; a character begun when the input ends is still given.
std::string UnpackSixBitAscii(std::span<const std::uint8_t> bytes);

}  // namespace varnok
