// Counts what the program takes from the heap: programming a board and showing text must take nothing. What
// the doubles of the machine take for themselves is not counted.
#pragma once

#include <cstddef>

namespace varnok::testing {

/// Allocations by operator new since the start.
std::size_t HeapAllocations();

/// A double's own memory, for its lifetime.
class Uncounted {
 public:
  Uncounted();
  ~Uncounted();
  Uncounted(const Uncounted&) = delete;
  Uncounted& operator=(const Uncounted&) = delete;
};

}  // namespace varnok::testing
