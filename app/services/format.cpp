#include "app/services/format.h"

#include <algorithm>
#include <optional>

#include "app/services/text.h"

namespace varnok {
namespace {

// A width or precision past this bound is cut: no text of the program needs it, and a hostile format cannot
// ask for gigabytes of padding.
constexpr std::size_t kWidestField = 4096;

struct Conversion {
  bool leftAlign = false;
  bool zeroFill = false;
  bool plusSign = false;
  bool blankSign = false;
  bool alternate = false;
  std::size_t width = 0;
  std::optional<std::size_t> precision;
  bool isLong = false;
  bool isShort = false;
  char letter = 0;
};

template <class Character>
std::size_t ReadNumber(std::basic_string_view<Character> format, std::size_t& position) {
  std::size_t number = 0;
  for (; position < format.size() && format[position] >= '0' && format[position] <= '9'; ++position)
    number =
        std::min<std::size_t>(number * 10 + static_cast<std::size_t>(format[position] - '0'), kWidestField);
  return number;
}

/// Reads the conversion after a '%'; `position` ends behind its letter. False when the format ends first.
template <class Character>
bool ReadConversion(std::basic_string_view<Character> format, std::size_t& position, Conversion& conversion) {
  for (; position < format.size(); ++position) {
    Character flag = format[position];
    if (flag == '-')
      conversion.leftAlign = true;
    else if (flag == '0')
      conversion.zeroFill = true;
    else if (flag == '+')
      conversion.plusSign = true;
    else if (flag == ' ')
      conversion.blankSign = true;
    else if (flag == '#')
      conversion.alternate = true;
    else
      break;
  }
  conversion.width = ReadNumber(format, position);
  if (position < format.size() && format[position] == '.') {
    ++position;
    conversion.precision = ReadNumber(format, position);
  }
  for (; position < format.size() && (format[position] == 'l' || format[position] == 'h'); ++position)
    (format[position] == 'l' ? conversion.isLong : conversion.isShort) = true;
  if (position >= format.size()) return false;
  Character letter = format[position++];
  conversion.letter = letter < 0x80 ? static_cast<char>(letter) : '\0';
  return true;
}

template <class Character>
void AppendText(std::basic_string<Character>& out, std::string_view text) {
  if constexpr (sizeof(Character) == 1)
    out.append(text);
  else
    out.append(Widen(text));
}

template <class Character>
void AppendText(std::basic_string<Character>& out, std::u16string_view text) {
  if constexpr (sizeof(Character) == 1)
    out.append(Narrow(text));
  else
    out.append(text);
}

template <class Character, class Text>
void AppendPadded(std::basic_string<Character>& out, const Conversion& conversion, Text text) {
  std::size_t padding = conversion.width > text.size() ? conversion.width - text.size() : 0;
  if (!conversion.leftAlign) out.append(padding, Character(' '));
  AppendText(out, text);
  if (conversion.leftAlign) out.append(padding, Character(' '));
}

std::string Digits(std::uint64_t value, unsigned base, bool upperCase) {
  std::string digits;
  for (; value != 0; value /= base)
    digits.push_back((upperCase ? "0123456789ABCDEF" : "0123456789abcdef")[value % base]);
  std::reverse(digits.begin(), digits.end());
  return digits;
}

template <class Character>
void AppendInteger(std::basic_string<Character>& out, const Conversion& conversion,
                   const FormatArgument& argument) {
  std::string prefix;
  std::string digits;
  if (conversion.letter == 'd' || conversion.letter == 'i') {
    std::int64_t value = argument.Signed();
    std::uint64_t magnitude =
        value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    digits = Digits(magnitude, 10, false);
    prefix = value < 0 ? "-" : conversion.plusSign ? "+" : conversion.blankSign ? " " : "";
  } else if (conversion.letter == 'u') {
    digits = Digits(argument.Bits(), 10, false);
  } else {
    bool upperCase = conversion.letter == 'X';
    digits = Digits(argument.Bits(), 16, upperCase);
    if (conversion.alternate && argument.Bits() != 0) prefix = upperCase ? "0X" : "0x";
  }
  std::size_t least = conversion.precision.value_or(1);
  if (conversion.zeroFill && !conversion.leftAlign && !conversion.precision &&
      conversion.width > prefix.size())
    least = std::max(least, conversion.width - prefix.size());
  if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
  AppendPadded(out, conversion, std::string_view(prefix + digits));
}

/// False when the conversion does not fit the argument.
template <class Character>
bool AppendArgument(std::basic_string<Character>& out, const Conversion& conversion,
                    const FormatArgument& argument) {
  using Kind = FormatArgument::Kind;
  switch (conversion.letter) {
    case 's': {
      std::size_t most = conversion.precision.value_or(std::string_view::npos);
      if (argument.kind() == Kind::Text8 && !conversion.isLong)
        AppendPadded(out, conversion, argument.text8().substr(0, most));
      else if (argument.kind() == Kind::Text16 && !conversion.isShort)
        AppendPadded(out, conversion, argument.text16().substr(0, most));
      else
        return false;
      return true;
    }
    case 'c': {
      if (argument.kind() != Kind::Character && argument.kind() != Kind::Integer) return false;
      char16_t character = argument.character();
      AppendPadded(out, conversion, std::u16string_view(&character, 1));
      return true;
    }
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
      if (argument.kind() != Kind::Character && argument.kind() != Kind::Integer) return false;
      AppendInteger(out, conversion, argument);
      return true;
    default:
      return false;
  }
}

template <class Character>
std::basic_string<Character> FormatText(std::basic_string_view<Character> format,
                                        std::span<const FormatArgument> arguments) {
  std::basic_string<Character> out;
  std::size_t next = 0;
  std::size_t position = 0;
  while (position < format.size()) {
    if (format[position] != '%') {
      out.push_back(format[position++]);
      continue;
    }
    std::size_t start = position++;
    if (position < format.size() && format[position] == '%') {
      out.push_back(format[position++]);
      continue;
    }
    Conversion conversion;
    if (ReadConversion(format, position, conversion) && next < arguments.size() &&
        AppendArgument(out, conversion, arguments[next])) {
      ++next;
    } else {
      // Only the sign itself stands as text, so that what follows is read anew.
      out.push_back(format[start]);
      position = start + 1;
    }
  }
  return out;
}

}  // namespace

FormatArgument::FormatArgument(const char* text)
    : FormatArgument(text == nullptr ? std::string_view("(null)") : std::string_view(text)) {}

FormatArgument::FormatArgument(const char16_t* text)
    : FormatArgument(text == nullptr ? std::u16string_view(u"(null)") : std::u16string_view(text)) {}

std::uint64_t FormatArgument::Bits() const {
  return bytes_ >= 8 ? number_ : number_ & ((std::uint64_t{1} << (8 * bytes_)) - 1);
}

std::int64_t FormatArgument::Signed() const {
  // An unsigned type shorter than int is promoted by C's printf and stays positive.
  if (!isNegative_ && bytes_ < 4) return static_cast<std::int64_t>(Bits());
  std::uint64_t bits = Bits();
  if (bytes_ == 4) return static_cast<std::int32_t>(bits);
  if (bytes_ < 4) return static_cast<std::int64_t>(number_);
  return static_cast<std::int64_t>(bits);
}

std::u16string FormatWith(std::u16string_view format, std::span<const FormatArgument> arguments) {
  return FormatText(format, arguments);
}

std::string FormatWith(std::string_view format, std::span<const FormatArgument> arguments) {
  return FormatText(format, arguments);
}

}  // namespace varnok
