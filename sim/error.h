// What goes wrong with a board's folder: bad JSON, a missing file, an image that cannot be written.
#pragma once

#include <stdexcept>

namespace varnok::sim {

class BoardError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A device that has no room left for what it is to store.
class StorageFull : public BoardError {
 public:
  using BoardError::BoardError;
};

}  // namespace varnok::sim
