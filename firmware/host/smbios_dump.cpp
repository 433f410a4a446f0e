#include "firmware/host/smbios_dump.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "firmware/bytes.h"
#include "firmware/smbios_layout.h"

namespace varnok::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

bool StartsWith(const Bytes& bytes, std::string_view anchor) {
  return bytes.size() >= anchor.size() &&
         std::equal(anchor.begin(), anchor.end(), bytes.begin(),
                    [](char wanted, std::uint8_t byte) { return static_cast<std::uint8_t>(wanted) == byte; });
}

/// The table behind its entry point at offset 20h, where dmidecode puts it, and the entry point saying so.
Bytes JoinedDump(Bytes entryPoint, std::span<const std::uint8_t> table) {
  constexpr std::size_t kTableOffset = 0x20;
  constexpr std::size_t kAddressOffset = 24;
  constexpr std::size_t kAddressOffset3 = 16;
  const bool isNewer = StartsWith(entryPoint, smbios::kAnchor3);
  entryPoint.resize(kTableOffset);
  auto address = entryPoint.begin() + (isNewer ? kAddressOffset3 : kAddressOffset);
  std::fill_n(address, isNewer ? 8 : 4, std::uint8_t{0});
  *address = kTableOffset;
  entryPoint.insert(entryPoint.end(), table.begin(), table.end());
  return entryPoint;
}

}  // namespace

SmbiosDump::SmbiosDump(Bytes dump) : dump_(std::move(dump)) {
  if (StartsWith(dump_, smbios::kAnchor)) {
    entryPointLength_ = std::min(dump_.size(), smbios::kEntryPointLength);
    std::copy_n(dump_.begin(), entryPointLength_, entryPoint_.begin());
  } else if (StartsWith(dump_, smbios::kAnchor3) && dump_.size() >= smbios::kEntryPoint3Length) {
    MakeFrom64BitEntryPoint();
  } else {
    throw std::runtime_error("does not begin with an SMBIOS entry point as dmidecode --dump-bin writes it");
  }
}

SmbiosDump::SmbiosDump(Bytes entryPoint, std::span<const std::uint8_t> table)
    : SmbiosDump(JoinedDump(std::move(entryPoint), table)) {}

void SmbiosDump::MakeFrom64BitEntryPoint() {
  const std::uint64_t address = NumberAt(dump_, 16, 8);
  const std::uint64_t largest = NumberAt(dump_, 12, 4);
  smbios::TableFacts facts = smbios::OlderFacts(dump_, Memory(address, static_cast<std::size_t>(largest)));
  if (facts.structures == 0) return;
  facts.address = static_cast<std::uint32_t>(address);
  smbios::WriteEntryPoint(facts, entryPoint_);
  entryPointLength_ = smbios::kEntryPointLength;
}

std::span<const std::uint8_t> SmbiosDump::Memory(std::uint64_t address, std::size_t length) const {
  if (address >= dump_.size()) return {};
  const auto offset = static_cast<std::size_t>(address);
  return std::span(dump_).subspan(offset, std::min(length, dump_.size() - offset));
}

}  // namespace varnok::host
