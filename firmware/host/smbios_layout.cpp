#include "firmware/host/smbios_layout.h"

#include <algorithm>
#include <numeric>

namespace varnok::host::smbios {
namespace {

void WriteLittleEndian(std::span<std::uint8_t> target, std::size_t offset, std::size_t count,
                       std::uint32_t value) {
  for (std::size_t i = 0; i < count; ++i) target[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

/// What makes the bytes sum to 0.
std::uint8_t ZeroSum(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint8_t>(0 - std::accumulate(bytes.begin(), bytes.end(), 0u));
}

}  // namespace

void WriteEntryPoint(const TableFacts& facts, std::span<std::uint8_t> target) {
  const auto entry = target.first(kEntryPointLength);
  std::fill(entry.begin(), entry.end(), std::uint8_t{0});
  std::copy(kAnchor.begin(), kAnchor.end(), entry.begin());
  entry[5] = kEntryPointLength;
  entry[6] = facts.majorVersion;
  entry[7] = facts.minorVersion;
  WriteLittleEndian(entry, 8, 2, facts.largestStructure);
  std::copy(kIntermediateAnchor.begin(), kIntermediateAnchor.end(), entry.begin() + kIntermediateOffset);
  WriteLittleEndian(entry, 22, 2, facts.length);
  WriteLittleEndian(entry, 24, 4, facts.address);
  WriteLittleEndian(entry, 28, 2, facts.structures);
  entry[30] = static_cast<std::uint8_t>(facts.majorVersion << 4 | (facts.minorVersion & 0x0F));
  entry[21] = ZeroSum(entry.subspan(kIntermediateOffset));
  entry[4] = ZeroSum(entry);
}

std::size_t StructureSize(std::span<const std::uint8_t> table) {
  if (table.size() < 4 || table[1] < 4) return 0;
  for (std::size_t end = table[1]; end + 1 < table.size(); ++end) {
    if (table[end] == 0 && table[end + 1] == 0) return end + 2;
  }
  return 0;
}

}  // namespace varnok::host::smbios
