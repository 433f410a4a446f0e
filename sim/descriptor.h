// A file descriptor that has an owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace varnok::sim {

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  void Close() {
    if (number_ >= 0) close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

}  // namespace varnok::sim
