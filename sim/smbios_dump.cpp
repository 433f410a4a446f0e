#include "sim/smbios_dump.h"

#include <algorithm>
#include <utility>

#include "sim/error.h"
#include "sim/smbios_layout.h"

namespace varnok::sim {
namespace {

bool StartsWith(const Bytes& bytes, std::string_view anchor) {
  return bytes.size() >= anchor.size() &&
         std::equal(anchor.begin(), anchor.end(), bytes.begin(),
                    [](char wanted, std::uint8_t byte) { return static_cast<std::uint8_t>(wanted) == byte; });
}

std::uint64_t ReadLittleEndian(const Bytes& bytes, std::size_t offset, std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < count; ++i) value |= std::uint64_t{bytes[offset + i]} << (8 * i);
  return value;
}

}  // namespace

SmbiosDump::SmbiosDump(Bytes dump) : dump_(std::move(dump)) {
  if (StartsWith(dump_, smbios::kAnchor)) {
    entryPointLength_ = std::min(dump_.size(), smbios::kEntryPointLength);
    std::copy_n(dump_.begin(), entryPointLength_, entryPoint_.begin());
  } else if (StartsWith(dump_, smbios::kAnchor3) && dump_.size() >= smbios::kEntryPoint3Length) {
    MakeFrom64BitEntryPoint();
  } else {
    throw BoardError("does not begin with an SMBIOS entry point as dmidecode --dump-bin writes it");
  }
}

void SmbiosDump::MakeFrom64BitEntryPoint() {
  const std::uint64_t address = ReadLittleEndian(dump_, 16, 8);
  const std::uint64_t largest = ReadLittleEndian(dump_, 12, 4);
  auto table = Memory(address, static_cast<std::size_t>(largest));
  smbios::TableFacts facts{dump_[7], dump_[8], static_cast<std::uint32_t>(address), 0, 0, 0};
  std::size_t length = 0;
  while (std::size_t size = smbios::StructureSize(table)) {
    length += size;
    if (length > 0xFFFF) return;
    ++facts.structures;
    facts.largestStructure = static_cast<std::uint16_t>(std::max<std::size_t>(facts.largestStructure, size));
    if (table[0] == smbios::kEndOfTable) break;
    table = table.subspan(size);
  }
  if (facts.structures == 0) return;
  facts.length = static_cast<std::uint16_t>(length);
  smbios::WriteEntryPoint(facts, entryPoint_);
  entryPointLength_ = smbios::kEntryPointLength;
}

std::span<const std::uint8_t> SmbiosDump::Memory(std::uint64_t address, std::size_t length) const {
  if (address >= dump_.size()) return {};
  const auto offset = static_cast<std::size_t>(address);
  return std::span(dump_).subspan(offset, std::min(length, dump_.size() - offset));
}

}  // namespace varnok::sim
