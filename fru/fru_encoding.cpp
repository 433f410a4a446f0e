#include "fru/fru_encoding.h"

#include <numeric>

namespace varnok {

std::uint8_t SumOf(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

// Kept: most significant bits first; images in the field were written so.
std::string UnpackSixBitAscii(std::span<const std::uint8_t> bytes) {
  constexpr unsigned kBits = 6;
  std::string text;
  unsigned pending = 0;
  unsigned pendingBits = 0;
  auto take = [&](unsigned value) { text.push_back(static_cast<char>((value & 0x3F) + 0x20)); };
  for (std::uint8_t byte : bytes) {
    if (byte == 0) break;
    pending = (pending << 8 | byte) & 0x3FFF;
    for (pendingBits += 8; pendingBits >= kBits; pendingBits -= kBits) take(pending >> (pendingBits - kBits));
  }
  if (pendingBits > 0) take(pending << (kBits - pendingBits));
  return text;
}

}  // namespace varnok
