// scanf-style reading of the few number and word forms that versions, scripts and FRU files use.
//
//   %x %X   hexadecimal number (an "0x" in front is taken, as by C's sscanf)     %d   decimal number
//   %c      one character, blanks included                                       %s   one word
//
// each with an optional width. White space in the format stands for any amount of it in the text; any other
// character must be met exactly. A number too large for its target becomes the largest that fits, so that no
// limit is passed by wrapping round.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace varnok {

/// Where one conversion stores its value; refers to the caller's variable.
class ScanTarget {
 public:
  ScanTarget(std::uint32_t* number) : number_(number) {}
  ScanTarget(std::int32_t* number) : signedNumber_(number) {}
  ScanTarget(char16_t* character) : character_(character) {}
  ScanTarget(std::u16string* word) : word_(word) {}

  bool StoreNumber(bool isNegative, std::uint64_t magnitude) const;
  bool StoreCharacter(char16_t value) const;
  bool StoreWord(std::u16string_view value) const;

 private:
  std::uint32_t* number_ = nullptr;
  std::int32_t* signedNumber_ = nullptr;
  char16_t* character_ = nullptr;
  std::u16string* word_ = nullptr;
};

/// The number of conversions stored. A conversion that does not fit its target ends the scan.
int ScanWith(std::u16string_view text, std::string_view format, std::span<const ScanTarget> targets);
int ScanWith(std::string_view text, std::string_view format, std::span<const ScanTarget> targets);

template <class Text, class... Targets>
int Scan(const Text& text, std::string_view format, Targets*... targets) {
  return ScanWith(text, format, std::array<ScanTarget, sizeof...(Targets)>{ScanTarget(targets)...});
}

}  // namespace varnok
