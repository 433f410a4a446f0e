// The SMBIOS structure table as bytes: the entry point, and one structure after the other (SMBIOS 3.5,
// sections 5.2.1 and 6.1). Every read is checked against the table: the bytes are the firmware's and may be
// anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace varnok {

/// One structure inside the table.
class SmbiosStructureView {
 public:
  SmbiosStructureView(std::span<const std::uint8_t> bytes, std::size_t formattedLength)
      : bytes_(bytes), formattedLength_(formattedLength) {}

  std::uint8_t type() const { return bytes_[0]; }
  std::uint16_t handle() const { return static_cast<std::uint16_t>(bytes_[2] | bytes_[3] << 8); }
  /// The formatted area and the strings with the NUL that ends them.
  std::span<const std::uint8_t> bytes() const { return bytes_; }

  /// Whether the formatted area holds `size` bytes at `offset`.
  bool Holds(std::size_t offset, std::size_t size) const { return offset + size <= formattedLength_; }
  /// A little-endian number of `size` bytes; 0 when the formatted area ends before it.
  std::uint64_t Number(std::size_t offset, std::size_t size) const;
  /// The string whose number is at `offset`, at most 64 bytes of it; empty when there is none.
  std::string_view Text(std::size_t offset) const;

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t formattedLength_;
};

/// The table that an entry point leads to.
class SmbiosTable {
 public:
  /// `entryPoint` points to an SMBIOS 2.x entry point, or is null. Nothing when its anchor is not "_SM_".
  static std::optional<SmbiosTable> Open(const void* entryPoint);

  /// The number of structures, as the entry point says.
  std::size_t structureCount() const { return structureCount_; }

  /// The structure at a byte offset; nothing at the table's end and where the bytes make no structure.
  std::optional<SmbiosStructureView> At(std::size_t offset) const;

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t structureCount_ = 0;
};

}  // namespace varnok
