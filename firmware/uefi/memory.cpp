// The memory functions that the compiler calls on its own. This file is compiled so that its loops are not
// turned back into calls of themselves.
#include <cstddef>

extern "C" {

void* memcpy(void* to, const void* from, std::size_t count) {
  auto* target = static_cast<unsigned char*>(to);
  auto* source = static_cast<const unsigned char*>(from);
  for (std::size_t i = 0; i < count; ++i) target[i] = source[i];
  return to;
}

void* memmove(void* to, const void* from, std::size_t count) {
  auto* target = static_cast<unsigned char*>(to);
  auto* source = static_cast<const unsigned char*>(from);
  if (target < source) return memcpy(to, from, count);
  for (std::size_t i = count; i > 0; --i) target[i - 1] = source[i - 1];
  return to;
}

void* memset(void* to, int value, std::size_t count) {
  auto* target = static_cast<unsigned char*>(to);
  for (std::size_t i = 0; i < count; ++i) target[i] = static_cast<unsigned char>(value);
  return to;
}

int memcmp(const void* left, const void* right, std::size_t count) {
  auto* a = static_cast<const unsigned char*>(left);
  auto* b = static_cast<const unsigned char*>(right);
  for (std::size_t i = 0; i < count; ++i)
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  return 0;
}

void* memchr(const void* text, int value, std::size_t count) {
  auto* bytes = static_cast<const unsigned char*>(text);
  for (std::size_t i = 0; i < count; ++i)
    if (bytes[i] == static_cast<unsigned char>(value)) return const_cast<unsigned char*>(bytes + i);
  return nullptr;
}

std::size_t strlen(const char* text) {
  std::size_t length = 0;
  while (text[length] != '\0') ++length;
  return length;
}

}  // extern "C"
