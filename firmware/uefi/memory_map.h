// What of the physical memory can be read, by the firmware's memory map. Boot services map it identically.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace varnok::uefi {

class MemoryMap {
 public:
  /// The part of `length` bytes at `address` that is memory; empty when none is.
  std::span<const std::uint8_t> Readable(std::uint64_t address, std::size_t length);

 private:
  struct Region {
    std::uint64_t start;
    std::uint64_t end;
  };
  void Load();

  /// By address; neighbours are joined.
  std::vector<Region> regions_;
};

}  // namespace varnok::uefi
