#include "firmware/command_text.h"

namespace varnok {

void CommandText::Split(std::span<const std::uint8_t> options) {
  count_ = 0;
  if (options.size() / 2 > kLongest) return;
  char16_t* next = text_.data();
  const char16_t* word = nullptr;
  bool isQuoted = false;
  for (std::size_t i = 0; i + 1 < options.size(); i += 2) {
    const char16_t character = options[i];
    const bool isEnd = character == 0 && options[i + 1] == 0;
    const bool isText = character >= u' ' && options[i + 1] == 0;
    if (isEnd) break;
    if (!isText || count_ == kMostWords) {
      count_ = 0;
      return;
    }
    if (character == u' ' && !isQuoted) {
      word = nullptr;
      *next++ = 0;
      continue;
    }
    if (word == nullptr) {
      if (count_ == 0 && (character == u'/' || character == u'-')) words_[count_++] = u"VARNOK";
      words_[count_++] = word = next;
    }
    if (character == u'"')
      isQuoted = !isQuoted;
    else
      *next++ = character;
  }
  *next = 0;
}

}  // namespace varnok
