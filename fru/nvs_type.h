// The kinds of storage behind a FRU, and the one place of their names.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace varnok {

/// The kinds of storage behind a FRU. Any other number is reached like a serial EEPROM, or refused (3).
namespace nvs_type {
inline constexpr std::uint32_t kAt24c02 = 0;    ///< serial EEPROM on a private bus
inline constexpr std::uint32_t kDs1624s = 1;    ///< thermometer with memory on a private bus
inline constexpr std::uint32_t kImbDevice = 2;  ///< FRU inventory device of a management controller
inline constexpr std::uint32_t kRefused = 3;    ///< no kind of storage
}  // namespace nvs_type

struct NvsTypeRow {
  std::string_view name;  ///< on the command line and in scripts
  std::uint32_t type;
  std::string_view fileName;  ///< in FRU files and on the console
};
inline constexpr std::array<NvsTypeRow, 3> kNvsTypes{{
    // Kept: files spell the serial EEPROM with the letter O, the command line with a zero; both are in use.
    {"AT24C02", nvs_type::kAt24c02, "AT24CO2"},
    {"DS1624S", nvs_type::kDs1624s, "DS1624S"},
    {"IMBDEVICE", nvs_type::kImbDevice, "IMBDEVICE"},
}};

/// The row of a storage kind; null for a kind without a name.
constexpr const NvsTypeRow* FindNvsType(std::uint32_t type) {
  for (const NvsTypeRow& row : kNvsTypes)
    if (row.type == type) return &row;
  return nullptr;
}

}  // namespace varnok
