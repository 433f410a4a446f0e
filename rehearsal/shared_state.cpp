#include "rehearsal/shared_state.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace varnok::rehearsal {

std::unique_ptr<SharedState> SharedState::Make(std::size_t limit, unsigned cores, std::string& error) {
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<int>::is_always_lock_free);
  // Zero bytes are an empty block; what is not used takes no memory.
  void* memory =
      mmap(nullptr, sizeof(Block), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) {
    error = std::string("no memory to share: ") + std::strerror(errno);
    return nullptr;
  }
  auto* block = static_cast<Block*>(memory);
  block->roads = 1;
  block->cores = static_cast<int>(cores) - 1;
  return std::unique_ptr<SharedState>(new SharedState(block, limit));
}

SharedState::SharedState(Block* block, std::size_t limit) : block_(block), limit_(limit), owner_(getpid()) {}

bool SharedState::IsAbandoned() const {
  return kill(owner_, 0) != 0;
}

SharedState::~SharedState() {
  munmap(block_, sizeof(Block));
}

bool SharedState::Enter(std::uint64_t state) {
  if (state == 0) state = 1;
  // A table that is nearly full tells nothing apart quickly any more: from then on every state counts as new.
  if (block_->states > kSlots / 4 * 3) return true;
  for (std::size_t slot = state % kSlots;; slot = (slot + 1) % kSlots) {
    std::uint64_t found = 0;
    if (block_->slots[slot].compare_exchange_strong(found, state)) {
      ++block_->states;
      return true;
    }
    if (found == state) return false;
  }
}

bool SharedState::BeginRoad() {
  if (block_->roads.fetch_add(1) < limit_) return true;
  --block_->roads;
  return false;
}

void SharedState::DropRoad() {
  --block_->roads;
}

bool SharedState::TakeCore() {
  if (block_->cores.fetch_sub(1) > 0) return true;
  ++block_->cores;
  return false;
}

}  // namespace varnok::rehearsal
