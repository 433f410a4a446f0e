#include "app/services/format.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <utility>

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

std::size_t ReadNumber(std::string_view format, std::size_t& position) {
  std::size_t number = 0;
  for (; position < format.size() && format[position] >= '0' && format[position] <= '9'; ++position)
    number =
        std::min<std::size_t>(number * 10 + static_cast<std::size_t>(format[position] - '0'), kWidestField);
  return number;
}

/// Reads the conversion after a '%'; `position` ends behind its letter. False when the format ends first.
bool ReadConversion(std::string_view format, std::size_t& position, Conversion& conversion) {
  for (; position < format.size(); ++position) {
    char flag = format[position];
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
  conversion.letter = format[position++];
  return true;
}

void Put(TextSink& sink, std::u16string_view text) {
  sink.Append(text);
}

void Put(TextSink& sink, std::string_view text) {
  std::array<char16_t, 64> piece;
  while (!text.empty()) {
    std::size_t count = std::min(text.size(), piece.size());
    std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count), piece.begin(),
                   [](char character) { return static_cast<unsigned char>(character); });
    sink.Append({piece.data(), count});
    text.remove_prefix(count);
  }
}

void Fill(TextSink& sink, std::size_t count, char16_t character) {
  for (; count > 0; --count) sink.Append({&character, 1});
}

/// Puts what `put` puts, `length` characters, at its side of the field.
template <class Putter>
void PutPadded(TextSink& sink, const Conversion& conversion, std::size_t length, Putter put) {
  std::size_t padding = conversion.width > length ? conversion.width - length : 0;
  if (!conversion.leftAlign) Fill(sink, padding, u' ');
  put();
  if (conversion.leftAlign) Fill(sink, padding, u' ');
}

template <class Text>
void PutText(TextSink& sink, const Conversion& conversion, Text text) {
  PutPadded(sink, conversion, text.size(), [&] { Put(sink, text); });
}

/// The digits of a number, none for 0, in room for the longest.
class Digits {
 public:
  Digits(std::uint64_t value, unsigned base, bool upperCase) {
    for (; value != 0; value /= base)
      room_[--start_] = (upperCase ? "0123456789ABCDEF" : "0123456789abcdef")[value % base];
  }
  std::string_view Text() const { return std::string_view(room_.data(), room_.size()).substr(start_); }

 private:
  std::array<char, 20> room_;
  std::size_t start_ = room_.size();
};

void PutInteger(TextSink& sink, const Conversion& conversion, const FormatArgument& argument) {
  std::string_view prefix;
  std::uint64_t magnitude = argument.Bits();
  unsigned base = 16;
  bool upperCase = conversion.letter == 'X';
  if (conversion.letter == 'd' || conversion.letter == 'i') {
    std::int64_t value = argument.Signed();
    base = 10;
    magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    prefix = value < 0 ? "-" : conversion.plusSign ? "+" : conversion.blankSign ? " " : "";
  } else if (conversion.letter == 'u') {
    base = 10;
  } else if (conversion.alternate && magnitude != 0) {
    prefix = upperCase ? "0X" : "0x";
  }
  const Digits digits(magnitude, base, upperCase);
  std::size_t least = conversion.precision.value_or(1);
  if (conversion.zeroFill && !conversion.leftAlign && !conversion.precision &&
      conversion.width > prefix.size())
    least = std::max(least, conversion.width - prefix.size());
  std::size_t zeros = least - std::min(least, digits.Text().size());
  PutPadded(sink, conversion, prefix.size() + zeros + digits.Text().size(), [&] {
    Put(sink, prefix);
    Fill(sink, zeros, u'0');
    Put(sink, digits.Text());
  });
}

/// False when the conversion does not fit the argument.
bool PutArgument(TextSink& sink, const Conversion& conversion, const FormatArgument& argument) {
  using Kind = FormatArgument::Kind;
  switch (conversion.letter) {
    case 's': {
      std::size_t most = conversion.precision.value_or(std::string_view::npos);
      if (argument.kind() == Kind::Text8 && !conversion.isLong)
        PutText(sink, conversion, argument.text8().substr(0, most));
      else if (argument.kind() == Kind::Text16 && !conversion.isShort)
        PutText(sink, conversion, argument.text16().substr(0, most));
      else
        return false;
      return true;
    }
    case 'c': {
      if (argument.kind() != Kind::Character && argument.kind() != Kind::Integer) return false;
      char16_t character = argument.character();
      PutText(sink, conversion, std::u16string_view(&character, 1));
      return true;
    }
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
      if (argument.kind() != Kind::Character && argument.kind() != Kind::Integer) return false;
      PutInteger(sink, conversion, argument);
      return true;
    default:
      return false;
  }
}

class StringSink final : public TextSink {
 public:
  void Append(std::u16string_view piece) override { text += piece; }

  std::u16string text;
};

class RoomSink final : public TextSink {
 public:
  explicit RoomSink(std::span<char16_t> room) : room_(room) {}
  void Append(std::u16string_view text) override {
    text = text.substr(0, room_.size() - count_);
    std::copy(text.begin(), text.end(), room_.begin() + static_cast<std::ptrdiff_t>(count_));
    count_ += text.size();
  }
  std::u16string_view Text() const { return {room_.data(), count_}; }

 private:
  std::span<char16_t> room_;
  std::size_t count_ = 0;
};

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

void FormatTo(TextSink& sink, std::string_view format, const FormatArgument* arguments, std::size_t count) {
  std::size_t next = 0;
  std::size_t position = 0;
  for (;;) {
    std::size_t sign = std::min(format.find('%', position), format.size());
    Put(sink, format.substr(position, sign - position));
    if (sign == format.size()) return;
    position = sign + 1;
    if (position < format.size() && format[position] == '%') {
      Fill(sink, 1, u'%');
      ++position;
      continue;
    }
    Conversion conversion;
    std::size_t behindSign = position;
    if (ReadConversion(format, position, conversion) && next < count &&
        PutArgument(sink, conversion, arguments[next])) {
      ++next;
    } else {
      // Only the sign itself stands as text, so that what follows is read anew.
      Fill(sink, 1, u'%');
      position = behindSign;
    }
  }
}

std::u16string_view FormatIntoWith(std::span<char16_t> room, const char* format,
                                   const FormatArgument* arguments, std::size_t count) {
  RoomSink sink(room);
  FormatTo(sink, format, arguments, count);
  return sink.Text();
}

std::u16string FormatWideWith(std::string_view format, const FormatArgument* arguments, std::size_t count) {
  StringSink sink;
  FormatTo(sink, format, arguments, count);
  return std::move(sink.text);
}

std::u16string FormatWideWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  return FormatWideWith(std::string_view(format), arguments, count);
}

std::string FormatWith(std::string_view format, const FormatArgument* arguments, std::size_t count) {
  return Narrow(FormatWideWith(format, arguments, count));
}

}  // namespace varnok
