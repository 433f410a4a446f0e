// The reservation of an SDR repository (IPMI v2.0, section 33.11): valid until the next one is taken, or
// until something that changes the repository's records cancels it.
#pragma once

#include <cstdint>

namespace varnok::sim {

class Reservation {
 public:
  /// A new reservation ID; 0000h is never one.
  std::uint16_t Take() {
    if (++last_ == 0) ++last_;
    current_ = last_;
    return current_;
  }
  void Cancel() { current_ = 0; }
  bool Holds(std::uint16_t id) const { return id != 0 && id == current_; }

 private:
  std::uint16_t last_ = 0;
  std::uint16_t current_ = 0;
};

}  // namespace varnok::sim
