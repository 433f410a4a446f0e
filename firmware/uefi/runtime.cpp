// What the compiler and the standard library expect of a runtime, over UEFI boot services.
#include "firmware/uefi/runtime.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <new>

#include "firmware/uefi/files.h"
#include "firmware/uefi/pool_blocks.h"

namespace varnok::uefi {
namespace {

EFI_SYSTEM_TABLE* systemTable = nullptr;
EFI_HANDLE imageHandle = nullptr;

// Constructors of namespace-scope objects, laid down by the linker: -1, the functions, 0.
extern "C" {
using Constructor = void (*)();
extern Constructor __CTOR_LIST__[];
}

// Destructors of static objects. A growing list would need memory when there may be none.
using Destructor = void (*)();
constexpr std::size_t kDestructorCapacity = 128;
Destructor destructors[kDestructorCapacity];
std::size_t destructorCount = 0;

}  // namespace

EFI_SYSTEM_TABLE& SystemTable() {
  return *systemTable;
}
EFI_BOOT_SERVICES& BootServices() {
  return *systemTable->BootServices;
}
EFI_HANDLE ImageHandle() {
  return imageHandle;
}

void StartRuntime(EFI_HANDLE image, EFI_SYSTEM_TABLE* table) {
  imageHandle = image;
  systemTable = table;
  std::size_t count = 0;
  while (__CTOR_LIST__[count + 1] != nullptr) ++count;
  for (; count > 0; --count) __CTOR_LIST__[count]();
}

void EndRuntime() {
  while (destructorCount > 0) destructors[--destructorCount]();
}

void EndProgram(const char16_t* message, Status status) {
  systemTable->ConOut->OutputString(systemTable->ConOut, ToEfi(message));
  CloseAllFiles();
  FreeAllPoolBlocks();
  BootServices().Exit(imageHandle, status.value, 0, nullptr);
  for (;;) {
  }
}

}  // namespace varnok::uefi

using varnok::uefi::EndProgram;

void* operator new(std::size_t bytes) {
  void* memory = varnok::uefi::AllocatePoolBlock(bytes);
  if (memory == nullptr) EndProgram(u"\r\nOut of memory.\r\n", varnok::uefi_status::kOutOfResources);
  return memory;
}
void* operator new[](std::size_t bytes) {
  return operator new(bytes);
}
void operator delete(void* memory) noexcept {
  varnok::uefi::FreePoolBlock(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
void operator delete[](void* memory) noexcept {
  operator delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  operator delete(memory);
}

extern "C" {
[[noreturn]] void abort() {
  EndProgram(u"\r\nInternal error.\r\n", varnok::uefi_status::kAborted);
}
[[noreturn]] void __cxa_pure_virtual() {
  abort();
}

int atexit(void (*function)()) {
  using namespace varnok::uefi;
  if (destructorCount == kDestructorCapacity) return -1;
  destructors[destructorCount++] = function;
  return 0;
}
}

namespace std {
[[noreturn]] void __throw_length_error(const char*) {
  abort();
}
[[noreturn]] void __throw_logic_error(const char*) {
  abort();
}
[[noreturn]] void __throw_bad_alloc() {
  abort();
}
[[noreturn]] void __throw_bad_array_new_length() {
  abort();
}
[[noreturn]] void __throw_out_of_range_fmt(const char*, ...) {
  abort();
}
[[noreturn]] void __throw_bad_function_call() {
  abort();
}

// The standard library's own object files are compiled for another calling convention.
namespace __detail {
void _List_node_base::_M_hook(_List_node_base* position) noexcept {
  _M_next = position;
  _M_prev = position->_M_prev;
  _M_prev->_M_next = this;
  position->_M_prev = this;
}
void _List_node_base::_M_unhook() noexcept {
  _M_prev->_M_next = _M_next;
  _M_next->_M_prev = _M_prev;
}
void _List_node_base::_M_transfer(_List_node_base* first, _List_node_base* last) noexcept {
  if (this == last) return;
  _List_node_base* moved = last->_M_prev;
  first->_M_prev->_M_next = last;
  last->_M_prev = first->_M_prev;
  _M_prev->_M_next = first;
  first->_M_prev = _M_prev;
  moved->_M_next = this;
  _M_prev = moved;
}
}  // namespace __detail
}  // namespace std
