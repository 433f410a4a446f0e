#include "firmware/host/reserve.h"

#include <algorithm>
#include <iterator>
#include <memory_resource>
#include <new>

namespace varnok::host {
namespace {

/// What the largest board takes at a time, with room to spare: a few copies of its largest image. Untouched,
/// it costs address space alone.
constexpr std::size_t kReserve = 8 << 20;
constexpr std::size_t kLargestPooled = 1 << 20;
constexpr std::size_t kAlignment = 16;

int worksInProgress = 0;
alignas(kAlignment) std::byte reserveRoom[kReserve];

/// Built at first use and never destroyed: what was taken may be given back when the program ends.
std::pmr::memory_resource& Reserve() {
  using Room = std::pmr::monotonic_buffer_resource;
  using Pool = std::pmr::unsynchronized_pool_resource;
  alignas(Room) static std::byte roomPlace[sizeof(Room)];
  alignas(Pool) static std::byte poolPlace[sizeof(Pool)];
  static auto* const whole =
      new (roomPlace) Room(reserveRoom, sizeof reserveRoom, std::pmr::null_memory_resource());
  static auto* const pool = new (poolPlace)
      Pool({.max_blocks_per_chunk = 16, .largest_required_pool_block = kLargestPooled}, whole);
  return *pool;
}

}  // namespace

MachineAtWork::MachineAtWork() {
  ++worksInProgress;
}
MachineAtWork::~MachineAtWork() {
  --worksInProgress;
}

void* TakeFromReserve(std::size_t bytes) noexcept {
  if (worksInProgress == 0 || bytes > kReserve) return nullptr;
  try {
    // The size stands in front of what is handed out.
    const std::size_t taken = bytes + kAlignment;
    auto* block = static_cast<std::byte*>(Reserve().allocate(taken, kAlignment));
    new (block) std::size_t(taken);
    return block + kAlignment;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool GiveBackToReserve(void* memory) noexcept {
  const std::less<> isBefore;
  if (isBefore(memory, reserveRoom) || !isBefore(memory, std::end(reserveRoom))) return false;
  std::byte* block = static_cast<std::byte*>(memory) - kAlignment;
  Reserve().deallocate(block, *reinterpret_cast<const std::size_t*>(block), kAlignment);
  return true;
}

}  // namespace varnok::host
