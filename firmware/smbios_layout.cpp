#include "firmware/smbios_layout.h"

#include <algorithm>
#include <array>

#include "firmware/bytes.h"
#include "firmware/ipmi.h"

namespace varnok::smbios {

void WriteEntryPoint(const TableFacts& facts, std::span<std::uint8_t> target) {
  static constexpr std::array<std::uint8_t, kEntryPointLength> kBlank{
      '_', 'S', 'M', '_', 0, kEntryPointLength, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '_', 'D', 'M', 'I', '_'};
  const auto entry = target.first(kEntryPointLength);
  std::copy(kBlank.begin(), kBlank.end(), entry.begin());
  entry[6] = facts.majorVersion;
  entry[7] = facts.minorVersion;
  ByteWriter(entry.subspan(8)).Word(facts.largestStructure);
  ByteWriter(entry.subspan(22)).Word(facts.length).Dword(facts.address).Word(facts.structures);
  entry[30] = static_cast<std::uint8_t>(facts.majorVersion << 4 | (facts.minorVersion & 0x0F));
  entry[21] = IpmiChecksum(entry.subspan(kIntermediateOffset));
  entry[4] = IpmiChecksum(entry);
}

TableFacts OlderFacts(std::span<const std::uint8_t> entryPoint3, std::span<const std::uint8_t> table) {
  constexpr std::size_t kMostBytes = 0xFFFF;
  TableFacts facts{entryPoint3[7], entryPoint3[8]};
  while (const std::size_t size = StructureSize(table)) {
    if (facts.length + size > kMostBytes) break;
    facts.length = static_cast<std::uint16_t>(facts.length + size);
    ++facts.structures;
    facts.largestStructure = std::max(facts.largestStructure, static_cast<std::uint16_t>(size));
    if (table[0] == kEndOfTable) break;
    table = table.subspan(size);
  }
  return facts;
}

std::size_t StructureSize(std::span<const std::uint8_t> table) {
  if (table.size() < 4 || table[1] < 4) return 0;
  for (std::size_t end = table[1]; end + 1 < table.size(); ++end) {
    if (table[end] == 0 && table[end + 1] == 0) return end + 2;
  }
  return 0;
}

}  // namespace varnok::smbios
