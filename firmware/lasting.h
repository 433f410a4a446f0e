// What the program's modules keep between their operations: made at first use, forgotten together.
//
//   Transport& TheTransport() { return Lasting<Transport>(); }
#pragma once

#include <cstddef>
#include <new>

namespace varnok {

/// One module's state in the list of all.
struct LastingSlot {
  void (*destroy)(void* object);
  void* object = nullptr;
  LastingSlot* next = nullptr;

  /// Puts a state into the list.
  void Keep(void* made);
};

/// The only T of its module. It is not destroyed when the program ends: the machine that its pool memory came
/// from may be gone.
template <class T>
T& Lasting() {
  alignas(T) static std::byte storage[sizeof(T)];
  static LastingSlot slot{[](void* object) { static_cast<T*>(object)->~T(); }};
  if (slot.object == nullptr) slot.Keep(new (storage) T());
  return *static_cast<T*>(slot.object);
}

/// Forgets what every module keeps, as if the program had not run yet: nothing is initialised, selected or
/// loaded. The machine that pool memory came from must still be there.
void ForgetProgramState();

}  // namespace varnok
