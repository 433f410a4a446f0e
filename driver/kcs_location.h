// Where a board's KCS interface is, by its SMBIOS IPMI device record (SMBIOS 3.6, section 7.39; IPMI v2.0,
// appendix C1).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace varnok {

struct KcsLocation {
  std::uint64_t base;    ///< of the data register
  std::uint8_t spacing;  ///< bytes from the data to the command and status register
  bool isIo;             ///< I/O ports, else memory

  bool operator==(const KcsLocation&) const = default;
};

/// What IPMI gives a board without a record (IPMI v2.0, section 9.5).
inline constexpr KcsLocation kUsualKcs{0xCA2, 1, true};

struct SmbiosStructures {
  std::uint64_t address;
  std::size_t length;

  bool operator==(const SmbiosStructures&) const = default;
};

/// Reads an entry point of the 2.x or the 3.x form; nothing when it is neither, or its checksum is wrong.
std::optional<SmbiosStructures> ReadSmbiosEntryPoint(std::span<const std::uint8_t> entryPoint);

/// What the IPMI device records among the structures name.
struct IpmiDevices {
  std::optional<KcsLocation> kcs;  ///< the first one
  std::uint32_t interfaces = 0;    ///< a bit for each interface type

  /// The name of an interface that is not KCS; null when none is named.
  const char16_t* OtherInterface() const;
};
IpmiDevices FindIpmiDevices(std::span<const std::uint8_t> structures);

}  // namespace varnok
