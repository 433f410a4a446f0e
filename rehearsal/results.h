// Where forked processes leave what they found: records of bytes in memory that they share, each added whole.
#pragma once

#include <functional>
#include <string>

#include "rehearsal/wire.h"
#include "sim/descriptor.h"

namespace varnok::rehearsal {

class Results {
 public:
  /// False, with the reason, when the system gives no memory for it.
  bool Open(std::string& error);
  /// Adds a record; one that finds no memory is lost.
  void Add(const Bytes& record);
  /// Hands out the records that were added since the last call, in the order in which they were. False when
  /// something is left that is no whole record, or not yet: the next call takes it up.
  bool Take(const std::function<void(std::span<const std::uint8_t>)>& taker);

 private:
  sim::Descriptor memory_;
  std::size_t taken_ = 0;
};

}  // namespace varnok::rehearsal
