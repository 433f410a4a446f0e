// The SMBIOS entry points, 2.x and 3.x (SMBIOS 3.6, sections 5.2.1 and 5.2.2), as the
// program's machines and the builder of tables share them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace varnok::smbios {

inline constexpr std::string_view kAnchor = "_SM_";
inline constexpr std::string_view kAnchor3 = "_SM3_";
inline constexpr std::size_t kEntryPointLength = 31;
inline constexpr std::size_t kEntryPoint3Length = 24;
inline constexpr std::size_t kIntermediateOffset = 16;
inline constexpr std::uint8_t kEndOfTable = 127;

/// What an entry point tells about its table.
struct TableFacts {
  std::uint8_t majorVersion = 0;
  std::uint8_t minorVersion = 0;
  std::uint32_t address = 0;
  std::uint16_t length = 0;
  std::uint16_t structures = 0;
  std::uint16_t largestStructure = 0;
};

/// Writes a 2.x entry point with both checksums into the first 31 bytes of `target`.
void WriteEntryPoint(const TableFacts& facts, std::span<std::uint8_t> target);

/// What a 2.x entry point tells of a table that a 3.x one leads to: as many structures as its limit of 64 KiB
/// allows, none where the table cannot be walked. The address is the caller's to set.
TableFacts OlderFacts(std::span<const std::uint8_t> entryPoint3, std::span<const std::uint8_t> table);

/// The bytes of the first structure of `table`, its strings and their double NUL included; 0 when it does not
/// end inside.
std::size_t StructureSize(std::span<const std::uint8_t> table);

}  // namespace varnok::smbios
