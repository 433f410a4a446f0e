#include "firmware/uefi/memory_map.h"

#include <algorithm>
#include <utility>

#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

constexpr std::uint64_t kPageSize = 4096;
// Tables of older firmware lie here, in ranges that no memory map lists.
constexpr std::uint64_t kLegacyEnd = 0x100000;

bool IsMemory(UINT32 type) {
  return type != EfiUnusableMemory && type != EfiMemoryMappedIO && type != EfiMemoryMappedIOPortSpace &&
         type < EfiMaxMemoryType;
}

}  // namespace

std::span<const std::uint8_t> MemoryMap::Readable(std::uint64_t address, std::size_t length) {
  if (regions_.empty()) Load();
  for (const Region& region : regions_)
    if (address >= region.start && address < region.end)
      return {reinterpret_cast<const std::uint8_t*>(address),
              std::min<std::uint64_t>(length, region.end - address)};
  return {};
}

void MemoryMap::Load() {
  std::vector<std::uint8_t> buffer(16 * kPageSize);
  UINTN size = 0;
  UINTN key = 0;
  UINTN descriptorSize = 0;
  UINT32 version = 0;
  Status status = uefi_status::kBufferTooSmall;
  while (status == uefi_status::kBufferTooSmall) {
    size = buffer.size();
    auto* map = reinterpret_cast<EFI_MEMORY_DESCRIPTOR*>(buffer.data());
    status = BootServices().GetMemoryMap(&size, map, &key, &descriptorSize, &version);
    if (status == uefi_status::kBufferTooSmall) buffer.resize(size + kPageSize);
  }
  std::vector<Region> found{{0, kLegacyEnd}};
  if (IsError(status) || descriptorSize == 0) size = 0;
  for (std::size_t offset = 0; offset + descriptorSize <= size && size != 0; offset += descriptorSize) {
    auto* descriptor = reinterpret_cast<const EFI_MEMORY_DESCRIPTOR*>(buffer.data() + offset);
    std::uint64_t start = descriptor->PhysicalStart;
    if (IsMemory(descriptor->Type)) found.push_back({start, start + descriptor->NumberOfPages * kPageSize});
  }
  // Nearly in order already, some hundred at most: the library's sort would be most of this file's code.
  for (std::size_t i = 1; i < found.size(); ++i)
    for (std::size_t j = i; j > 0 && found[j].start < found[j - 1].start; --j)
      std::swap(found[j], found[j - 1]);
  for (const Region& region : found) {
    if (!regions_.empty() && region.start <= regions_.back().end)
      regions_.back().end = std::max(regions_.back().end, region.end);
    else
      regions_.push_back(region);
  }
}

}  // namespace varnok::uefi
