// Owners of pool memory: allocations whose failure the program reports in words of its own, where an ordinary
// container would end the program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "firmware/firmware.h"

namespace varnok {

struct PoolDeleter {
  template <class T>
  void operator()(T* object) const {
    object->~T();
    TheFirmware().FreePool(object);
  }
};

/// Owns one object in pool memory.
template <class T>
using PoolPtr = std::unique_ptr<T, PoolDeleter>;

/// Builds a T in pool memory; null when the pool is exhausted.
template <class T, class... Arguments>
PoolPtr<T> MakeInPool(Arguments&&... arguments) {
  void* memory = TheFirmware().AllocatePool(sizeof(T));
  if (memory == nullptr) return nullptr;
  return PoolPtr<T>(new (memory) T(std::forward<Arguments>(arguments)...));
}

/// A zero-filled byte buffer in pool memory.
class PoolBuffer {
 public:
  PoolBuffer() = default;

  /// Replaces the content by `size` zero bytes. False, with the old content kept, when the pool is exhausted.
  bool Allocate(std::size_t size) {
    void* memory = TheFirmware().AllocatePool(size == 0 ? 1 : size);
    if (memory == nullptr) return false;
    std::memset(memory, 0, size);
    bytes_.reset(static_cast<std::uint8_t*>(memory));
    size_ = size;
    return true;
  }

  void Reset() {
    bytes_.reset();
    size_ = 0;
  }

  bool IsAllocated() const { return bytes_ != nullptr; }
  std::uint8_t* data() { return bytes_.get(); }
  const std::uint8_t* data() const { return bytes_.get(); }
  std::size_t size() const { return size_; }
  std::span<std::uint8_t> Bytes() { return {bytes_.get(), size_}; }
  std::span<const std::uint8_t> Bytes() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<std::uint8_t, PoolDeleter> bytes_;
  std::size_t size_ = 0;
};

}  // namespace varnok
