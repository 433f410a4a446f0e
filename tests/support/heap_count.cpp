#include "tests/support/heap_count.h"

#include <cstdlib>
#include <new>

namespace varnok::testing {
namespace {

std::size_t allocations = 0;
int uncounted = 0;

}  // namespace

std::size_t HeapAllocations() {
  return allocations;
}

Uncounted::Uncounted() {
  ++uncounted;
}
Uncounted::~Uncounted() {
  --uncounted;
}

}  // namespace varnok::testing

void* operator new(std::size_t bytes) {
  using namespace varnok::testing;
  if (uncounted == 0) ++allocations;
  for (;;) {
    if (void* memory = std::malloc(bytes == 0 ? 1 : bytes)) return memory;
    std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}
// Sanitizers bring this one, and would miss the pair of its block.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return std::malloc(bytes == 0 ? 1 : bytes);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
