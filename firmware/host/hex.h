// Bytes as text.
#pragma once

#include <cstdint>
#include <string>

namespace varnok::host {

/// Two capital digits: "0A".
inline std::string HexByte(std::uint8_t byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  return {kDigits[byte >> 4], kDigits[byte & 0x0F]};
}

}  // namespace varnok::host
