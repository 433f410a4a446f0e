#include "firmware/argument_vector.h"

#include <string_view>

namespace varnok {

bool ArgumentVector::Build(std::span<const char16_t* const> arguments) {
  std::size_t length = 0;
  for (const char16_t* argument : arguments) length += std::u16string_view(argument).size() + 1;
  if (!text_.Allocate(length + 1) || !pointers_.Allocate((arguments.size() + 1) * sizeof(char*)))
    return false;
  auto* end = reinterpret_cast<char*>(text_.data());
  char** pointer = Pointers();
  for (const char16_t* argument : arguments) {
    *pointer++ = end;
    for (char16_t character : std::u16string_view(argument))
      *end++ = character > 0xFF ? '?' : static_cast<char>(character);
    ++end;
  }
  count_ = static_cast<int>(arguments.size());
  return true;
}

char** ArgumentVector::Pointers() {
  return reinterpret_cast<char**>(pointers_.data());
}

}  // namespace varnok
