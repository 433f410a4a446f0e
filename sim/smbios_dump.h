// An SMBIOS dump, as `dmidecode --dump-bin` writes it, seen as memory: a file offset is a physical address.
// Content is passed on as it stands; what it means is the program's business.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "sim/image.h"

namespace varnok::sim {

class SmbiosDump {
 public:
  /// Throws BoardError when the dump does not begin with an entry point. A 3.x entry point is answered as
  /// a 2.x one when its table is within the 2.x limits (64 KiB, addresses of 32 bits), else the board has
  /// no 2.x entry point.
  explicit SmbiosDump(Bytes dump);

  /// The 2.x entry point; empty when there is none. Readable for 255 bytes, whatever its length byte says.
  std::span<const std::uint8_t> EntryPoint() const { return {entryPoint_.data(), entryPointLength_}; }
  std::span<const std::uint8_t> Memory(std::uint64_t address, std::size_t length) const;

 private:
  void MakeFrom64BitEntryPoint();

  Bytes dump_;
  std::array<std::uint8_t, 256> entryPoint_{};
  std::size_t entryPointLength_ = 0;
};

}  // namespace varnok::sim
