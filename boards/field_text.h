// Text of type/length fields by the standards (FRU storage definition v1.0, section 13; IPMI v2.0,
// section 43.15), and bytes, numbers and dates for people. All results are UTF-8 that a terminal can take.
#pragma once

#include <string>
#include <string_view>

#include "boards/decoded.h"

namespace varnok::boards {

/// The type code of a type/length byte, bits 7-6.
enum class TextCode : std::uint8_t { Binary = 0, BcdPlus = 1, SixBit = 2, Text = 3 };

/// What the types 00b and 11b mean differs: a record's ID string has Unicode where a FRU has binary bytes.
enum class TextRules { FruEnglish, FruOtherLanguage, RecordId };

struct FieldText {
  std::string text;
  const char* encoding;
};

/// `data` as the upper two bits of its type/length byte say. Trailing zero bytes of text are padding.
FieldText TextOfField(std::uint8_t typeLength, ByteView data, TextRules rules);

/// Latin-1, or UTF-16 with the low byte first, as UTF-8; control characters and lone surrogates as "\xNN".
std::string TextFromLatin1(ByteView bytes);
std::string TextFromUtf16(ByteView bytes);
/// Packed 6-bit ASCII, the least significant bits first.
std::string TextFromSixBit(ByteView bytes);
std::string TextFromBcdPlus(ByteView bytes);
/// Any bytes as one line for a terminal: control characters, and bytes that are no UTF-8, as "\xNN".
std::string Printable(std::string_view text);

/// "01 0A FF".
std::string HexBytes(ByteView bytes);
/// "0Ah", with as many digits as `width`.
std::string Hex(std::uint32_t value, int width = 2);
/// The number that up to four bytes hold, the low byte first.
std::uint32_t LittleEndian(ByteView bytes);
/// Minutes since 0:00 of 1 January 1996 as "2015-07-13 14:29"; 0 stands for no date.
std::string DateFromMinutes(std::uint32_t minutes);
/// A number with as many digits as it needs, at most six significant ones: "3.3", "12000", "1.23457e+09".
std::string NumberText(double value);
std::string Plural(std::size_t count, const char* noun);

}  // namespace varnok::boards
