// printf-style formatting of 8- and 16-bit text. Arguments carry their types: a conversion that does not fit
// its argument, or that has none, shows as it stands and reads nothing, so text of an operator or a file is
// harmless as a format.
//
//   %s         8- or 16-bit text          %d %i      signed decimal
//   %hs        8-bit text                 %u         unsigned decimal
//   %ls        16-bit text                %x %X      hexadecimal
//   %c %lc     one character              %%         a per cent sign
//
// with the flags '-', '0', '+', ' ' and '#', a width, a precision and the sizes h, hh, l, ll of C's printf;
// an integer is shown in the width of its own type, so the sizes only make the C format valid here.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "firmware/status.h"

namespace varnok {

/// One argument of a format call; refers to text, never owns it.
class FormatArgument {
 public:
  enum class Kind : std::uint8_t { Integer, Character, Text8, Text16 };

  template <std::integral Number>
  requires(!std::same_as<Number, char> && !std::same_as<Number, char16_t>) FormatArgument(Number number)
      : kind_(Kind::Integer),
        isNegative_(std::is_signed_v<Number> && number < Number{}),
        bytes_(sizeof(Number)),
        number_(static_cast<std::uint64_t>(number)) {}
  FormatArgument(Status status) : FormatArgument(status.value) {}
  FormatArgument(char character) : kind_(Kind::Character), number_(static_cast<unsigned char>(character)) {}
  FormatArgument(char16_t character) : kind_(Kind::Character), number_(character) {}
  FormatArgument(std::string_view text) : kind_(Kind::Text8), length_(text.size()), text8_(text.data()) {}
  FormatArgument(const std::string& text) : FormatArgument(std::string_view(text)) {}
  FormatArgument(const char* text);
  FormatArgument(std::u16string_view text)
      : kind_(Kind::Text16), length_(text.size()), text16_(text.data()) {}
  FormatArgument(const std::u16string& text) : FormatArgument(std::u16string_view(text)) {}
  FormatArgument(const char16_t* text);

  Kind kind() const { return kind_; }
  std::string_view text8() const { return {text8_, length_}; }
  std::u16string_view text16() const { return {text16_, length_}; }
  char16_t character() const { return static_cast<char16_t>(number_); }

  /// The bits of an integer or the number of a character, without sign extension past the type's own width.
  std::uint64_t Bits() const;
  /// The same bits read as a signed number of the type's own width.
  std::int64_t Signed() const;

 private:
  Kind kind_;
  bool isNegative_ = false;
  std::uint8_t bytes_ = 4;
  std::size_t length_ = 0;
  union {
    std::uint64_t number_;
    const char* text8_;
    const char16_t* text16_;
  };
};

/// The arguments of one call. What formats stands out of line and takes them by address and number, which go
/// in registers, since there are hundreds of calls.
template <std::size_t count>
using FormatArguments = std::array<FormatArgument, count>;

/// Takes text piece by piece.
class TextSink {
 public:
  virtual void Append(std::u16string_view text) = 0;

 protected:
  ~TextSink() = default;
};

/// Formats into a sink, piece by piece, and takes no memory for it.
void FormatTo(TextSink& sink, std::string_view format, const FormatArgument* arguments, std::size_t count);

/// Formats into `room`, takes no memory, and cuts what does not fit. No NUL is put behind the text.
std::u16string_view FormatIntoWith(std::span<char16_t> room, const char* format,
                                   const FormatArgument* arguments, std::size_t count);
template <class... Arguments>
std::u16string_view FormatInto(std::span<char16_t> room, const char* format, const Arguments&... arguments) {
  const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
  return FormatIntoWith(room, format, list.data(), list.size());
}

std::u16string FormatWideWith(const char* format, const FormatArgument* arguments, std::size_t count);
std::u16string FormatWideWith(std::string_view format, const FormatArgument* arguments, std::size_t count);

/// Formats 16-bit text. The format is 8-bit text, as all texts of the program itself.
template <class... Arguments>
std::u16string FormatWide(const char* format, const Arguments&... arguments) {
  const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
  return FormatWideWith(format, list.data(), list.size());
}

std::string FormatWith(std::string_view format, const FormatArgument* arguments, std::size_t count);

/// Formats 8-bit text; 16-bit arguments are narrowed. The format may be text of a script, with zeros in it.
template <class... Arguments>
std::string Format(std::string_view format, const Arguments&... arguments) {
  const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
  return FormatWith(format, list.data(), list.size());
}

/// Formats 16-bit text and keeps at most its first `limit` characters.
template <class... Arguments>
std::u16string FormatUpTo(std::size_t limit, const char* format, const Arguments&... arguments) {
  std::u16string text = FormatWide(format, arguments...);
  if (text.size() > limit) text.resize(limit);
  return text;
}

}  // namespace varnok
