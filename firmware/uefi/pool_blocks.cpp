#include "firmware/uefi/pool_blocks.h"

#include <algorithm>
#include <cstdint>

#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

constexpr std::size_t kAlignment = 16;

/// Stands right in front of the memory that is handed out.
struct alignas(kAlignment) BlockHeader {
  BlockHeader* previous;
  BlockHeader* next;
  void* firmwareBlock;
  std::size_t size;  ///< of the firmware's block, in bytes
};
constexpr std::size_t kOverhead = sizeof(BlockHeader) + kAlignment - 1;

BlockHeader* newest = nullptr;
std::size_t inUse = 0;
std::size_t mostInUse = 0;

}  // namespace

void* AllocatePoolBlock(std::size_t bytes) {
  void* firmwareBlock = nullptr;
  if (bytes > SIZE_MAX - kOverhead) return nullptr;
  if (BootServices().AllocatePool(EfiBootServicesData, bytes + kOverhead, &firmwareBlock) != EFI_SUCCESS)
    return nullptr;
  auto address = (reinterpret_cast<std::uintptr_t>(firmwareBlock) + kAlignment - 1) & ~(kAlignment - 1);
  auto* header = reinterpret_cast<BlockHeader*>(address);
  *header = {nullptr, newest, firmwareBlock, bytes + kOverhead};
  if (newest != nullptr) newest->previous = header;
  newest = header;
  inUse += header->size;
  mostInUse = std::max(mostInUse, inUse);
  return header + 1;
}

void FreePoolBlock(void* memory) {
  if (memory == nullptr) return;
  BlockHeader* header = static_cast<BlockHeader*>(memory) - 1;
  if (header->next != nullptr) header->next->previous = header->previous;
  (header->previous != nullptr ? header->previous->next : newest) = header->next;
  inUse -= header->size;
  BootServices().FreePool(header->firmwareBlock);
}

std::size_t MostPoolBytes() {
  return mostInUse;
}

void FreeAllPoolBlocks() {
  while (newest != nullptr) FreePoolBlock(newest + 1);
}

}  // namespace varnok::uefi
