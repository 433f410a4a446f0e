#include "platform/smbios_table.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "firmware/bytes.h"
#include "firmware/firmware.h"

namespace varnok {
namespace {

constexpr std::string_view kAnchor = "_SM_";
constexpr std::size_t kEntryLengthAt = 0x05;
constexpr std::size_t kTableLengthAt = 0x16;
constexpr std::size_t kTableAddressAt = 0x18;
constexpr std::size_t kStructureCountAt = 0x1C;
constexpr std::size_t kEntrySize = 0x1F;

constexpr std::size_t kStructureHeader = 4;
constexpr std::size_t kLengthAt = 1;
constexpr std::size_t kTextLimit = 64;

/// Where the string set at `start` ends: behind its double NUL, or at the end of the bytes when there is
/// none.
std::size_t EndOfStrings(std::span<const std::uint8_t> bytes, std::size_t start) {
  for (std::size_t i = start; i + 1 < bytes.size(); ++i)
    if (bytes[i] == 0 && bytes[i + 1] == 0) return i + 2;
  return bytes.size();
}

}  // namespace

std::uint64_t SmbiosStructureView::Number(std::size_t offset, std::size_t size) const {
  return Holds(offset, size) ? NumberAt(bytes_, offset, size) : 0;
}

std::string_view SmbiosStructureView::Text(std::size_t offset) const {
  std::uint64_t number = Number(offset, 1);
  if (number == 0) return {};
  std::span<const std::uint8_t> strings = bytes_.subspan(formattedLength_);
  while (!strings.empty() && strings[0] != 0) {
    std::size_t length =
        static_cast<std::size_t>(std::find(strings.begin(), strings.end(), 0) - strings.begin());
    if (--number == 0) return {reinterpret_cast<const char*>(strings.data()), std::min(length, kTextLimit)};
    strings = strings.subspan(std::min(length + 1, strings.size()));
  }
  return {};
}

std::optional<SmbiosTable> SmbiosTable::Open(const void* entryPoint) {
  if (entryPoint == nullptr || std::memcmp(entryPoint, kAnchor.data(), kAnchor.size()) != 0)
    return std::nullopt;
  // Fields past a length that is too small read as 0; one that is too large reads nothing past the standard's
  // layout.
  std::array<std::uint8_t, kEntrySize> entry{};
  const auto* source = static_cast<const std::uint8_t*>(entryPoint);
  std::memcpy(entry.data(), source, std::min<std::size_t>(source[kEntryLengthAt], entry.size()));
  SmbiosTable table;
  table.bytes_ = TheFirmware().PhysicalMemory(DwordAt(entry, kTableAddressAt), WordAt(entry, kTableLengthAt));
  table.structureCount_ = WordAt(entry, kStructureCountAt);
  return table;
}

std::optional<SmbiosStructureView> SmbiosTable::At(std::size_t offset) const {
  if (offset >= bytes_.size() || bytes_.size() - offset < kStructureHeader) return std::nullopt;
  std::span<const std::uint8_t> rest = bytes_.subspan(offset);
  std::size_t length = rest[kLengthAt];
  if (length < kStructureHeader || length > rest.size()) return std::nullopt;
  return SmbiosStructureView(rest.first(EndOfStrings(rest, length)), length);
}

}  // namespace varnok
