// What goes wrong with a board folder. Thrown inside sim/ only; Board turns it into a text.
#pragma once

#include <stdexcept>

namespace varnok::sim {

class BoardError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace varnok::sim
