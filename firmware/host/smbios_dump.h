// An SMBIOS dump, as `dmidecode --dump-bin` writes it, seen as memory: a file offset is a physical address.
// Content is passed on as it stands; what it means is the program's business.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace varnok::host {

class SmbiosDump {
 public:
  /// Throws std::runtime_error when the dump does not begin with an entry point. A 3.x entry point is
  /// answered as a 2.x one that covers as many structures as the 2.x limit of 64 KiB allows.
  explicit SmbiosDump(std::vector<std::uint8_t> dump);
  /// From an entry point and its table in files of their own, as Linux shows them.
  SmbiosDump(std::vector<std::uint8_t> entryPoint, std::span<const std::uint8_t> table);

  /// The 2.x entry point; empty when there is none. Readable for 255 bytes, whatever its length byte says.
  std::span<const std::uint8_t> EntryPoint() const { return {entryPoint_.data(), entryPointLength_}; }
  std::span<const std::uint8_t> Memory(std::uint64_t address, std::size_t length) const;

 private:
  void MakeFrom64BitEntryPoint();

  std::vector<std::uint8_t> dump_;
  std::array<std::uint8_t, 256> entryPoint_{};
  std::size_t entryPointLength_ = 0;
};

}  // namespace varnok::host
