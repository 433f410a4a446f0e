#include "firmware/command_text.h"

#include "firmware/bytes.h"

namespace varnok {
namespace {

constexpr char16_t kQuote = u'"';

/// The text up to its NUL; empty for bytes that are none. Arguments are 8-bit text.
std::u16string TextOf(std::span<const std::uint8_t> options) {
  std::u16string text;
  for (ByteReader reader(options); !reader.Rest().empty();) {
    const char16_t character = reader.Word();
    if (character == 0) break;
    if (reader.HasFailed() || character < u' ' || character > 0xFF) return {};
    text += character;
  }
  return text;
}

}  // namespace

void CommandText::Split(std::span<const std::uint8_t> options) {
  const std::u16string line = TextOf(options);
  std::vector<std::size_t> starts;
  bool isInside = false;
  bool isQuoted = false;
  for (const char16_t character : line) {
    const bool isGap = character == u' ' && !isQuoted;
    if (!isGap && !isInside) {
      if (starts.empty() && (character == u'/' || character == u'-')) {
        starts.push_back(0);
        text_.append(u"VARNOK", 7);
      }
      starts.push_back(text_.size());
    }
    if (isGap && isInside) text_ += u'\0';
    isInside = !isGap;
    if (character == kQuote) isQuoted = !isQuoted;
    if (!isGap && character != kQuote) text_ += character;
  }
  for (const std::size_t start : starts) words_.push_back(text_.c_str() + start);
}

}  // namespace varnok
