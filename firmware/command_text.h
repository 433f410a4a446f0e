// A command line that comes as one text, as load options of an image do where no shell splits it (UEFI 2.10,
// section 9.1): the arguments with blanks between them, some in quotes.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace varnok {

class CommandText {
 public:
  /// Splits 16-bit text, with a NUL behind it or without. Boot managers hand over bytes of their own, too:
  /// what is no 8-bit text, or is longer than any command line, gives no arguments. Where the text begins
  /// with an option, the program's name is put in front.
  void Split(std::span<const std::uint8_t> options);

  std::span<const char16_t* const> Arguments() const { return {words_.data(), count_}; }

 private:
  static constexpr std::size_t kLongest = 1024;
  static constexpr std::size_t kMostWords = 64;

  std::array<char16_t, kLongest + 1> text_{};  ///< a NUL behind each word
  std::array<const char16_t*, kMostWords + 1> words_{};
  std::size_t count_ = 0;
};

}  // namespace varnok
