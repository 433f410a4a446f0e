// What the compiler and the standard library expect of a runtime, over UEFI boot services.
#include <cstddef>
#include <cstdint>
#include <new>

#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

EFI_SYSTEM_TABLE* systemTable = nullptr;
EFI_HANDLE imageHandle = nullptr;

// Constructors of namespace-scope objects, laid down by the linker: -1, the functions, 0.
extern "C" {
using Constructor = void (*)();
extern Constructor __CTOR_LIST__[];
}

}  // namespace

EFI_SYSTEM_TABLE& SystemTable() { return *systemTable; }
EFI_HANDLE ImageHandle() { return imageHandle; }

void StartRuntime(EFI_HANDLE image, EFI_SYSTEM_TABLE* table) {
  imageHandle = image;
  systemTable = table;
  std::size_t count = 0;
  while (__CTOR_LIST__[count + 1] != nullptr) ++count;
  for (; count > 0; --count) __CTOR_LIST__[count]();
}

void EndProgram(const char16_t* message) {
  systemTable->ConOut->OutputString(systemTable->ConOut,
                                    reinterpret_cast<CHAR16*>(const_cast<char16_t*>(message)));
  systemTable->BootServices->Exit(imageHandle, EFI_OUT_OF_RESOURCES, 0, nullptr);
  for (;;) {
  }
}

}  // namespace varnok::uefi

using varnok::uefi::EndProgram;

void* operator new(std::size_t bytes) {
  void* memory = nullptr;
  auto& services = *varnok::uefi::SystemTable().BootServices;
  if (services.AllocatePool(EfiBootServicesData, bytes, &memory) != EFI_SUCCESS) EndProgram(u"\r\nOut of memory.\r\n");
  return memory;
}
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void operator delete(void* memory) noexcept {
  if (memory != nullptr) varnok::uefi::SystemTable().BootServices->FreePool(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

extern "C" {
[[noreturn]] void abort() { EndProgram(u"\r\nInternal error.\r\n"); }
[[noreturn]] void __cxa_pure_virtual() { abort(); }
int atexit(void (*)()) { return 0; }
}

namespace std {
[[noreturn]] void __throw_length_error(const char*) { abort(); }
[[noreturn]] void __throw_logic_error(const char*) { abort(); }
[[noreturn]] void __throw_bad_alloc() { abort(); }
[[noreturn]] void __throw_bad_array_new_length() { abort(); }
[[noreturn]] void __throw_out_of_range_fmt(const char*, ...) { abort(); }
[[noreturn]] void __throw_bad_function_call() { abort(); }
}  // namespace std
