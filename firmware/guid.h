// A GUID as UEFI lays it out in memory (UEFI 2.10, appendix A).
#pragma once

#include <array>
#include <cstdint>

namespace varnok {

struct Guid {
  std::uint32_t data1;
  std::uint16_t data2;
  std::uint16_t data3;
  std::array<std::uint8_t, 8> data4;

  bool operator==(const Guid&) const = default;
};
static_assert(sizeof(Guid) == 16);

/// The configuration table of an SMBIOS 2.x entry point (UEFI 2.10, section 4.6).
inline constexpr Guid kSmbiosTableGuid{
    0xEB9D2D31, 0x2D88, 0x11D3, {0x9A, 0x16, 0x00, 0x90, 0x27, 0x3F, 0xC1, 0x4D}};

/// And that of a 3.x one.
inline constexpr Guid kSmbios3TableGuid{
    0xF2FD1544, 0x9794, 0x4A2C, {0x99, 0x2E, 0xE5, 0xBB, 0xCF, 0x20, 0xE3, 0x94}};

}  // namespace varnok
