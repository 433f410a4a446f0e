// Builds SMBIOS structures from readable field lists, and a dump of them as `dmidecode --dump-bin` writes
// one.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "sim/image.h"

namespace varnok::sim {

/// One structure: fields in the order of the SMBIOS specification, behind the 4-byte header.
class SmbiosStructure {
 public:
  SmbiosStructure(std::uint8_t type, std::uint16_t handle);

  SmbiosStructure& Byte(std::uint8_t value) { return Number(value, 1); }
  SmbiosStructure& Word(std::uint16_t value) { return Number(value, 2); }
  SmbiosStructure& Long(std::uint32_t value) { return Number(value, 4); }
  SmbiosStructure& Quad(std::uint64_t value) { return Number(value, 8); }
  SmbiosStructure& Raw(const Bytes& bytes);
  /// A string field: its number in the structure's string set; an empty text is string 0, not there.
  SmbiosStructure& String(std::string_view text);

  Bytes Finish() const;

 private:
  SmbiosStructure& Number(std::uint64_t value, std::size_t bytes);

  Bytes formatted_;
  Bytes strings_;
  std::uint8_t stringCount_ = 0;
};

/// Entry point 2.x of SMBIOS version major.minor at offset 0, the table at offset 32.
Bytes BuildSmbiosDump(std::uint8_t major, std::uint8_t minor, const std::vector<Bytes>& structures);

}  // namespace varnok::sim
