// A command line that comes as one text, as load options of an image do where no shell splits it (UEFI 2.10,
// section 9.1): the arguments with blanks between them, some in quotes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace varnok {

class CommandText {
 public:
  /// Splits 16-bit text, with a NUL behind it or without. Boot managers hand over bytes of their own, too:
  /// what is no text gives no arguments. The program's name is put in front where the text begins with an
  /// option.
  void Split(std::span<const std::uint8_t> options);

  std::span<const char16_t* const> Arguments() const { return words_; }

 private:
  std::u16string text_;  ///< the words, a NUL behind each
  std::vector<const char16_t*> words_;
};

}  // namespace varnok
