// State of a module that lives until the program ends, made at first use.
#pragma once

#include <cstddef>
#include <new>

namespace varnok {

/// The only T of its module. It is never destroyed: at exit the machine that its pool memory came from may be
/// gone.
template <class T>
T& Lasting() {
  alignas(T) static std::byte storage[sizeof(T)];
  static T* object = new (storage) T();
  return *object;
}

}  // namespace varnok
