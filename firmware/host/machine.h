// What the Linux firmware asks of the board below it: a simulated board or this computer's own BMC. Terminal,
// files and environment are Linux's in either case.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "firmware/firmware.h"
#include "firmware/ipmi_protocol.h"

namespace varnok::host {

class Machine {
 public:
  virtual ~Machine() = default;

  /// The IPMI protocol that this board's firmware has installed; null when it installs none.
  virtual IpmiProtocol* InstalledIpmi() = 0;

  /// An SMBIOS 2.x entry point; empty when the board has no table.
  virtual std::span<const std::uint8_t> SmbiosEntryPoint() = 0;
  /// The part of `length` bytes at a physical address that can be read.
  virtual std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) = 0;

  virtual void Stall(std::uint64_t microseconds, StallKind kind) = 0;
  virtual WallClock Now() = 0;
};

}  // namespace varnok::host
