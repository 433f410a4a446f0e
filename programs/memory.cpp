// Where the Linux programs' memory comes from: the computer, and the reserve of the machine at work when the
// computer has none.
#include <cstdlib>
#include <new>

#include "firmware/host/reserve.h"

void* operator new(std::size_t bytes) {
  for (;;) {
    if (void* memory = std::malloc(bytes == 0 ? 1 : bytes)) return memory;
    if (void* memory = varnok::host::TakeFromReserve(bytes)) return memory;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}
// Sanitizers bring this one, and would miss the pair of its block.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  void* memory = std::malloc(bytes == 0 ? 1 : bytes);
  return memory != nullptr ? memory : varnok::host::TakeFromReserve(bytes);
}
void operator delete(void* memory) noexcept {
  if (!varnok::host::GiveBackToReserve(memory)) std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
