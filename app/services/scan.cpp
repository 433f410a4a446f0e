#include "app/services/scan.h"

#include <algorithm>

#include "app/services/text.h"

namespace varnok {
namespace {

// Past every target's range, and far from overflow when multiplied by a base.
constexpr std::uint64_t kTooLarge = std::uint64_t{1} << 40;

bool IsSpace(char16_t character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

int DigitValue(char16_t character, unsigned base) {
  int value = character < 0x80 ? HexDigitValue(static_cast<char>(character)) : -1;
  return value < static_cast<int>(base) ? value : -1;
}

/// Walks the text; every read leaves the position behind what it took.
class Scanner {
 public:
  explicit Scanner(std::u16string_view text) : text_(text) {}

  bool AtEnd() const { return position_ >= text_.size(); }
  void SkipSpace() {
    while (!AtEnd() && IsSpace(text_[position_])) ++position_;
  }
  bool Take(char16_t character) {
    if (AtEnd() || text_[position_] != character) return false;
    ++position_;
    return true;
  }
  bool TakeCharacter(char16_t& character) {
    if (AtEnd()) return false;
    character = text_[position_++];
    return true;
  }

  bool TakeNumber(unsigned base, std::size_t width, bool& isNegative, std::uint64_t& magnitude) {
    SkipSpace();
    isNegative = false;
    if (width > 0 && !AtEnd() && (text_[position_] == '-' || text_[position_] == '+')) {
      isNegative = text_[position_++] == '-';
      --width;
    }
    std::size_t digits = 0;
    if (base == 16 && width > 0 && Take('0')) {
      --width;
      ++digits;
      if (width > 0 && (Take('x') || Take('X'))) --width;
    }
    magnitude = 0;
    for (; width > 0 && !AtEnd() && DigitValue(text_[position_], base) >= 0; --width, ++position_, ++digits)
      magnitude = std::min(magnitude * base + static_cast<std::uint64_t>(DigitValue(text_[position_], base)),
                           kTooLarge);
    return digits != 0;
  }

  bool TakeWord(std::size_t width, std::u16string_view& word) {
    SkipSpace();
    std::size_t start = position_;
    while (!AtEnd() && !IsSpace(text_[position_]) && position_ - start < width) ++position_;
    word = text_.substr(start, position_ - start);
    return !word.empty();
  }

 private:
  std::u16string_view text_;
  std::size_t position_ = 0;
};

bool TakeConversion(Scanner& scanner, char letter, std::size_t width, const ScanTarget& target) {
  switch (letter) {
    case 'x':
    case 'X':
    case 'd': {
      bool isNegative = false;
      std::uint64_t magnitude = 0;
      return scanner.TakeNumber(letter == 'd' ? 10 : 16, width, isNegative, magnitude) &&
             target.StoreNumber(isNegative, magnitude);
    }
    case 'c': {
      char16_t character = 0;
      return scanner.TakeCharacter(character) && target.StoreCharacter(character);
    }
    case 's': {
      std::u16string_view word;
      return scanner.TakeWord(width, word) && target.StoreWord(word);
    }
    default:
      return false;
  }
}

}  // namespace

bool ScanTarget::StoreNumber(bool isNegative, std::uint64_t magnitude) const {
  if (number_ != nullptr) {
    auto value = static_cast<std::uint32_t>(std::min<std::uint64_t>(magnitude, 0xFFFFFFFF));
    *number_ = isNegative ? 0 - value : value;
  } else if (signedNumber_ != nullptr) {
    std::uint64_t limit = isNegative ? 0x80000000 : 0x7FFFFFFF;
    auto value = static_cast<std::int64_t>(std::min(magnitude, limit));
    *signedNumber_ = static_cast<std::int32_t>(isNegative ? -value : value);
  } else {
    return false;
  }
  return true;
}

bool ScanTarget::StoreCharacter(char16_t value) const {
  if (character_ == nullptr) return false;
  *character_ = value;
  return true;
}

bool ScanTarget::StoreWord(std::u16string_view value) const {
  if (word_ == nullptr) return false;
  *word_ = value;
  return true;
}

int ScanWith(std::u16string_view text, std::string_view format, std::span<const ScanTarget> targets) {
  Scanner scanner(text);
  std::size_t stored = 0;
  for (std::size_t position = 0; position < format.size(); ++position) {
    char character = format[position];
    if (IsSpace(static_cast<unsigned char>(character))) {
      scanner.SkipSpace();
      continue;
    }
    if (character != '%') {
      if (!scanner.Take(static_cast<unsigned char>(character))) break;
      continue;
    }
    std::size_t width = 0;
    while (++position < format.size() && format[position] >= '0' && format[position] <= '9')
      width = width * 10 + static_cast<std::size_t>(format[position] - '0');
    if (position >= format.size() || stored >= targets.size()) break;
    if (!TakeConversion(scanner, format[position], width == 0 ? std::u16string_view::npos : width,
                        targets[stored]))
      break;
    ++stored;
  }
  return static_cast<int>(stored);
}

int ScanWith(std::string_view text, std::string_view format, std::span<const ScanTarget> targets) {
  return ScanWith(Widen(text), format, targets);
}

}  // namespace varnok
