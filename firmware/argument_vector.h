// The shell's 16-bit arguments as the 8-bit vector that the program's entry takes.
#pragma once

#include <span>

#include "firmware/pool.h"

namespace varnok {

class ArgumentVector {
 public:
  /// Narrows the arguments, one after the other, into one zero-filled block, and points at each of them; a
  /// null pointer ends the vector. False when the pool has no room for either.
  bool Build(std::span<const char16_t* const> arguments);

  int Count() const { return count_; }
  char** Pointers();

 private:
  PoolBuffer text_;
  PoolBuffer pointers_;
  int count_ = 0;
};

}  // namespace varnok
