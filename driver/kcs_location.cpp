#include "driver/kcs_location.h"

#include <algorithm>
#include <string_view>

#include "firmware/bytes.h"
#include "firmware/ipmi.h"

namespace varnok {
namespace {

using Bytes = std::span<const std::uint8_t>;

bool StartsWith(Bytes bytes, std::string_view anchor) {
  return bytes.size() >= anchor.size() &&
         std::equal(anchor.begin(), anchor.end(), bytes.begin(),
                    [](char a, std::uint8_t b) { return a == static_cast<char>(b); });
}

/// The entry point without what lies behind it; empty when its length or checksum is wrong.
Bytes Checked(Bytes bytes, std::size_t lengthOffset, std::size_t shortest) {
  if (bytes.size() < shortest || bytes[lengthOffset] < shortest || bytes[lengthOffset] > bytes.size())
    return {};
  bytes = bytes.first(bytes[lengthOffset]);
  return IpmiChecksum(bytes) == 0 ? bytes : Bytes{};
}

// IPMI device record.
constexpr std::uint8_t kIpmiDeviceType = 38;
constexpr std::uint8_t kEndType = 127;
constexpr std::uint8_t kKcsInterface = 1;
constexpr std::size_t kInterfaceOffset = 0x04;
constexpr std::size_t kBaseOffset = 0x08;
constexpr std::size_t kModifierOffset = 0x10;
constexpr std::uint8_t kSpacings[] = {1, 4, 16};

std::optional<KcsLocation> ReadIpmiDevice(Bytes record) {
  if (record.size() < kModifierOffset || record[kInterfaceOffset] != kKcsInterface) return {};
  std::uint64_t base = NumberAt(record, kBaseOffset, 8);
  // Version 1.0 of the record ends with the address.
  unsigned modifier = record.size() > kModifierOffset ? record[kModifierOffset] : 0u;
  std::size_t spacing = modifier >> 6;
  // Some firmware leaves the address empty; nothing may be written to the first bytes of memory.
  if (spacing >= std::size(kSpacings) || base <= 1) return {};
  bool isIo = (base & 1) != 0;
  // Bit 0 tells the address space; the address's own lowest bit is kept in the modifier.
  return KcsLocation{(base & ~std::uint64_t{1}) | (modifier >> 4 & 1), kSpacings[spacing], isIo};
}

}  // namespace

std::optional<SmbiosStructures> ReadSmbiosEntryPoint(Bytes entryPoint) {
  if (StartsWith(entryPoint, "_SM3_")) {
    Bytes entry = Checked(entryPoint, 6, 0x18);
    if (entry.empty()) return {};
    return SmbiosStructures{NumberAt(entry, 0x10, 8), static_cast<std::size_t>(NumberAt(entry, 0x0C, 4))};
  }
  if (StartsWith(entryPoint, "_SM_")) {
    // Some firmware gives the length of version 2.1 as 1Eh.
    Bytes entry = Checked(entryPoint, 5, 0x1E);
    if (entry.empty()) return {};
    return SmbiosStructures{NumberAt(entry, 0x18, 4), static_cast<std::size_t>(NumberAt(entry, 0x16, 2))};
  }
  return {};
}

IpmiDevices FindIpmiDevices(Bytes structures) {
  constexpr std::size_t kHeaderLength = 4;
  IpmiDevices found;
  while (structures.size() >= kHeaderLength && structures[0] != kEndType) {
    std::size_t length = structures[1];
    if (length < kHeaderLength || length > structures.size()) break;
    if (structures[0] == kIpmiDeviceType) {
      if (auto location = ReadIpmiDevice(structures.first(length)); location && !found.kcs)
        found.kcs = location;
      if (length > kInterfaceOffset && structures[kInterfaceOffset] < 32)
        found.interfaces |= std::uint32_t{1} << structures[kInterfaceOffset];
    }
    // Strings follow, and two NULs end them.
    std::size_t end = length;
    while (end + 1 < structures.size() && (structures[end] != 0 || structures[end + 1] != 0)) ++end;
    structures = structures.subspan(std::min(end + 2, structures.size()));
  }
  return found;
}

const char16_t* IpmiDevices::OtherInterface() const {
  static constexpr const char16_t* kNames[] = {u"SMIC", u"BT", u"SSIF"};  // from 2 on
  for (std::size_t i = 0; i < std::size(kNames); ++i)
    if ((interfaces >> (i + 2) & 1) != 0) return kNames[i];
  return nullptr;
}

}  // namespace varnok
