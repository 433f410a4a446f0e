#include "firmware/host/utf8.h"

#include <algorithm>
#include <array>

namespace varnok::host {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Reads one character; `position` moves behind it, or by one byte where the text is ill-formed.
char32_t ReadCharacter(std::string_view text, std::size_t& position) {
  auto lead = static_cast<unsigned char>(text[position++]);
  if (lead < 0x80) return lead;
  std::size_t tail = lead >= 0xF0 && lead < 0xF5   ? 3
                     : lead >= 0xE0 && lead < 0xF0 ? 2
                     : lead >= 0xC2 && lead < 0xE0 ? 1
                                                   : 0;
  if (tail == 0 || position + tail > text.size()) return kReplacement;
  char32_t character = lead & (0x3F >> tail);
  for (std::size_t i = 0; i < tail; ++i) {
    auto byte = static_cast<unsigned char>(text[position + i]);
    if ((byte & 0xC0) != 0x80) return kReplacement;
    character = character << 6 | (byte & 0x3F);
  }
  static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  bool isSurrogate = character >= 0xD800 && character < 0xE000;
  if (character < kSmallest[tail] || character > 0x10FFFF || isSurrogate) return kReplacement;
  position += tail;
  return character;
}

constexpr std::size_t kLongestCharacter = 4;

/// Puts one character at `out`; returns its length.
std::size_t PutCharacter(char* out, char32_t character) {
  if (character < 0x80) {
    *out = static_cast<char>(character);
    return 1;
  }
  std::size_t tail = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  static constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
  *out = static_cast<char>(kLead[tail] | (character >> (6 * tail)));
  for (std::size_t i = 1; i <= tail; ++i)
    out[i] = static_cast<char>(0x80 | ((character >> (6 * (tail - i))) & 0x3F));
  return tail + 1;
}

/// Takes the first character off text that has one; an unpaired surrogate reads as U+FFFD.
char32_t TakeCharacter(std::u16string_view& text) {
  char32_t character = text.front();
  text.remove_prefix(1);
  if (character < 0xD800 || character >= 0xE000) return character;
  bool isPair = character < 0xDC00 && !text.empty() && text.front() >= 0xDC00 && text.front() < 0xE000;
  if (!isPair) return kReplacement;
  character = 0x10000 + ((character - 0xD800) << 10) + (text.front() - 0xDC00u);
  text.remove_prefix(1);
  return character;
}

}  // namespace

std::u16string FromUtf8(std::string_view text) {
  std::u16string out;
  for (std::size_t position = 0; position < text.size();) {
    char32_t character = ReadCharacter(text, position);
    if (character >= 0x10000) {
      out.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(character));
    }
  }
  return out;
}

std::string_view TakeUtf8(std::u16string_view& text, std::span<char> room) {
  std::size_t length = 0;
  while (!text.empty() && length + kLongestCharacter <= room.size()) {
    // Nearly all text is ASCII, and goes over in one run.
    const std::size_t most = std::min(text.size(), room.size() - length);
    std::size_t run = 0;
    for (; run < most && text[run] < 0x80; ++run) room[length + run] = static_cast<char>(text[run]);
    text.remove_prefix(run);
    length += run;
    if (run == 0) length += PutCharacter(room.data() + length, TakeCharacter(text));
  }
  return {room.data(), length};
}

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  for (std::array<char, 256> room; !text.empty();) out += TakeUtf8(text, room);
  return out;
}

std::string Latin1FromUtf8(std::string_view text) {
  std::string out;
  for (char16_t character : FromUtf8(text))
    out.push_back(character > 0xFF ? '?' : static_cast<char>(character));
  return out;
}

std::vector<std::string> Latin1FromUtf8(std::span<const std::string> texts) {
  std::vector<std::string> out;
  out.reserve(texts.size());
  for (const std::string& text : texts) out.push_back(Latin1FromUtf8(text));
  return out;
}

std::string Utf8FromLatin1(std::string_view text) {
  std::string out;
  for (char character : text) {
    std::array<char, kLongestCharacter> bytes;
    out.append(bytes.data(), PutCharacter(bytes.data(), static_cast<unsigned char>(character)));
  }
  return out;
}

}  // namespace varnok::host
