#include "firmware/host/smbios_layout.h"

#include <algorithm>

#include "firmware/bytes.h"
#include "firmware/ipmi.h"

namespace varnok::host::smbios {

void WriteEntryPoint(const TableFacts& facts, std::span<std::uint8_t> target) {
  const auto entry = target.first(kEntryPointLength);
  std::fill(entry.begin(), entry.end(), std::uint8_t{0});
  std::copy(kAnchor.begin(), kAnchor.end(), entry.begin());
  auto at = [entry](std::size_t offset) { return ByteWriter(entry.subspan(offset)); };
  at(5)
      .Byte(kEntryPointLength)
      .Byte(facts.majorVersion)
      .Byte(facts.minorVersion)
      .Word(facts.largestStructure);
  std::copy(kIntermediateAnchor.begin(), kIntermediateAnchor.end(), entry.begin() + kIntermediateOffset);
  at(22).Word(facts.length).Dword(facts.address).Word(facts.structures);
  entry[30] = static_cast<std::uint8_t>(facts.majorVersion << 4 | (facts.minorVersion & 0x0F));
  entry[21] = IpmiChecksum(entry.subspan(kIntermediateOffset));
  entry[4] = IpmiChecksum(entry);
}

std::size_t StructureSize(std::span<const std::uint8_t> table) {
  if (table.size() < 4 || table[1] < 4) return 0;
  for (std::size_t end = table[1]; end + 1 < table.size(); ++end) {
    if (table[end] == 0 && table[end + 1] == 0) return end + 2;
  }
  return 0;
}

}  // namespace varnok::host::smbios
