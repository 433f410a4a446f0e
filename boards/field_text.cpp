#include "boards/field_text.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "app/services/format.h"

namespace varnok::boards {
namespace {

void AppendUtf8(std::string& text, std::uint32_t code) {
  auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

void AppendEscaped(std::string& text, std::uint32_t code) {
  text += Format(code > 0xFF ? "\\u%04X" : "\\x%02X", code);
}

bool IsControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

/// Characters that turn or hide the text around them on a terminal.
bool IsHidden(std::uint32_t code) {
  return code == 0xAD || (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF;
}

void Append(std::string& text, std::uint32_t code) {
  if (IsControl(code) || IsHidden(code))
    AppendEscaped(text, code);
  else
    AppendUtf8(text, code);
}

ByteView WithoutTrailingZeros(ByteView bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  return bytes;
}

/// The character at the start of `text` and its length; length 0 when these bytes are no UTF-8.
std::pair<std::uint32_t, std::size_t> Utf8Character(std::string_view text) {
  auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  std::uint32_t first = byte(0);
  if (first < 0x80) return {first, 1};
  std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return {0, 0};
  std::uint32_t code = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {0, 0};
    code = code << 6 | (byte(i) & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
  bool isLegal = code >= kLeast[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  return {code, isLegal ? length : 0};
}

}  // namespace

std::string TextFromLatin1(ByteView bytes) {
  std::string text;
  for (std::uint8_t byte : WithoutTrailingZeros(bytes)) Append(text, byte);
  return text;
}

std::string TextFromUtf16(ByteView bytes) {
  std::string text;
  auto unit = [&](std::size_t i) { return static_cast<std::uint32_t>(bytes[i] | bytes[i + 1] << 8); };
  std::size_t end = bytes.size() / 2 * 2;
  while (end >= 2 && unit(end - 2) == 0) end -= 2;
  for (std::size_t i = 0; i < end; i += 2) {
    std::uint32_t code = unit(i);
    bool isPair = code >= 0xD800 && code < 0xDC00 && i + 2 < end && (unit(i + 2) & 0xFC00) == 0xDC00;
    if (isPair) {
      code = 0x10000 + ((code & 0x3FF) << 10) + (unit(i + 2) & 0x3FF);
      i += 2;
    }
    if (code >= 0xD800 && code <= 0xDFFF)
      AppendEscaped(text, code);
    else
      Append(text, code);
  }
  if (bytes.size() % 2 != 0 && bytes.back() != 0) AppendEscaped(text, bytes.back());
  return text;
}

std::string TextFromSixBit(ByteView bytes) {
  std::string text;
  std::uint32_t bits = 0;
  int count = 0;
  for (std::uint8_t byte : bytes) {
    bits |= static_cast<std::uint32_t>(byte) << count;
    for (count += 8; count >= 6; count -= 6, bits >>= 6) text += static_cast<char>(0x20 + (bits & 0x3F));
  }
  return text;
}

std::string TextFromBcdPlus(ByteView bytes) {
  constexpr std::string_view kDigits = "0123456789 -.:,_";
  std::string text;
  for (std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

FieldText TextOfField(std::uint8_t typeLength, ByteView data, TextRules rules) {
  switch (static_cast<TextCode>(typeLength >> 6)) {
    case TextCode::Binary:
      if (rules == TextRules::RecordId) return {TextFromUtf16(data), "Unicode"};
      return {HexBytes(data), "binary"};
    case TextCode::BcdPlus:
      return {TextFromBcdPlus(data), "BCD plus"};
    case TextCode::SixBit:
      return {TextFromSixBit(data), "6-bit"};
    case TextCode::Text:
      break;
  }
  if (rules == TextRules::FruOtherLanguage) return {TextFromUtf16(data), "Unicode"};
  return {TextFromLatin1(data), "text"};
}

std::string Printable(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    auto [code, length] = Utf8Character(text);
    if (length == 0)
      AppendEscaped(printable, static_cast<std::uint8_t>(text[0]));
    else
      Append(printable, code);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return printable;
}

std::string HexBytes(ByteView bytes) {
  std::string text;
  for (std::uint8_t byte : bytes) text += Format(text.empty() ? "%02X" : " %02X", byte);
  return text;
}

std::string Hex(std::uint32_t value, int width) {
  return Format("%0" + std::to_string(width) + "Xh", value);
}

std::uint32_t LittleEndian(ByteView bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

std::string DateFromMinutes(std::uint32_t minutes) {
  using namespace std::chrono;
  if (minutes == 0) return "not given";
  sys_days day = sys_days(year(1996) / January / 1) + days(minutes / (24 * 60));
  year_month_day date(day);
  return Format("%04d-%02u-%02u %02u:%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), minutes / 60 % 24,
                minutes % 60);
}

std::string NumberText(double value) {
  if (std::isnan(value)) return "not defined";
  if (value == 0) value = 0;  // no "-0"
  bool isWhole = std::nearbyint(value) == value && std::fabs(value) < 1e9;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), isWhole ? "%.0f" : "%.6g", value);
  return text.data();
}

std::string Plural(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace varnok::boards
