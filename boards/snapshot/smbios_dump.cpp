#include "boards/snapshot/smbios_dump.h"

#include <algorithm>
#include <cstring>

#include "firmware/bytes.h"
#include "firmware/firmware.h"
#include "firmware/guid.h"
#include "firmware/ipmi.h"

namespace varnok::boards {
namespace {

// The entry point (SMBIOS 3.6, section 5.2.1).
constexpr std::size_t kSize = 0x1F;
constexpr std::size_t kChecksumAt = 0x04;
constexpr std::size_t kLengthAt = 0x05;
constexpr std::size_t kInnerAt = 0x10;
constexpr std::size_t kInnerSize = 0x0F;
constexpr std::size_t kInnerChecksumAt = 0x15;
constexpr std::size_t kTableLengthAt = 0x16;
constexpr std::size_t kTableAddressAt = 0x18;
constexpr std::uint8_t kTableOffset = 0x20;

void SetChecksum(Bytes& bytes, std::size_t at, std::size_t offset, std::size_t count) {
  bytes[at] = 0;
  bytes[at] = IpmiChecksum(std::span(bytes).subspan(offset, count));
}

}  // namespace

Bytes DumpSmbios() {
  const auto* entry =
      static_cast<const std::uint8_t*>(TheFirmware().FindConfigurationTable(kSmbiosTableGuid));
  if (entry == nullptr || std::memcmp(entry, "_SM_", 4) != 0) return {};
  Bytes dump(kTableOffset, 0);
  std::copy_n(entry, std::min<std::size_t>(entry[kLengthAt], kSize), dump.begin());
  const auto table =
      TheFirmware().PhysicalMemory(DwordAt(dump, kTableAddressAt), WordAt(dump, kTableLengthAt));
  if (table.empty()) return {};
  const std::uint8_t place[] = {kTableOffset, 0, 0, 0};
  std::copy_n(place, sizeof(place), dump.begin() + kTableAddressAt);
  SetChecksum(dump, kInnerChecksumAt, kInnerAt, kInnerSize);
  SetChecksum(dump, kChecksumAt, 0, kSize);
  dump.insert(dump.end(), table.begin(), table.end());
  return dump;
}

}  // namespace varnok::boards
