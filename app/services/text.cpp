#include "app/services/text.h"

#include <algorithm>

namespace varnok {
namespace {

template <class Character>
Character Upper(Character character) {
  return character >= 'a' && character <= 'z' ? static_cast<Character>(character - 'a' + 'A') : character;
}

template <class Character>
bool Equal(std::basic_string_view<Character> left, std::basic_string_view<Character> right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](Character a, Character b) { return Upper(a) == Upper(b); });
}

}  // namespace

std::u16string Widen(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  for (char character : text) wide.push_back(static_cast<unsigned char>(character));
  return wide;
}

std::string Narrow(std::u16string_view text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (char16_t character : text) narrow.push_back(character > 0xFF ? '?' : static_cast<char>(character));
  return narrow;
}

std::string_view UpToNul(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

char ToUpper(char character) {
  return Upper(character);
}
char16_t ToUpper(char16_t character) {
  return Upper(character);
}
bool EqualsIgnoreCase(std::string_view left, std::string_view right) {
  return Equal(left, right);
}
bool EqualsIgnoreCase(std::u16string_view left, std::u16string_view right) {
  return Equal(left, right);
}

int HexDigitValue(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  char upper = Upper(character);
  return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

}  // namespace varnok
