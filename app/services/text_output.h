// Text on its way out, in fixed room: showing and logging must go on where memory has ended.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/format.h"
#include "firmware/firmware.h"

namespace varnok {

/// Gathers text and hands it on, as a span that may be changed, when its room is full and at the end.
template <class Place>
class GatheredText final : public TextSink {
 public:
  explicit GatheredText(Place place) : place_(place) {}
  ~GatheredText() {
    if (count_ > 0) place_(std::span(room_).first(count_));
  }
  GatheredText(const GatheredText&) = delete;
  GatheredText& operator=(const GatheredText&) = delete;

  void Append(std::u16string_view text) override {
    for (char16_t character : text) {
      if (count_ == room_.size()) HandOn();
      room_[count_++] = character;
    }
  }

 private:
  void HandOn() {
    // The two halves of a character stay together.
    char16_t last = room_.back();
    bool isHalf = last >= 0xD800 && last < 0xDC00;
    place_(std::span(room_).first(count_ - (isHalf ? 1 : 0)));
    count_ = 0;
    if (isHalf) room_[count_++] = last;
  }

  Place place_;
  std::array<char16_t, 512> room_;
  std::size_t count_ = 0;
};

/// 16-bit little-endian text, as the program writes all its logs and output files: hands the bytes of `text`
/// to `put`, which returns a Status, until it fails.
template <class Putter>
Status PutTextBytes(std::u16string_view text, Putter put) {
  std::array<std::uint8_t, 1024> bytes;
  while (!text.empty()) {
    std::size_t count = std::min(text.size(), bytes.size() / 2);
    for (std::size_t i = 0; i < count; ++i) {
      bytes[2 * i] = static_cast<std::uint8_t>(text[i] & 0xFF);
      bytes[2 * i + 1] = static_cast<std::uint8_t>(text[i] >> 8);
    }
    if (Status status = put(std::span<const std::uint8_t>(bytes).first(2 * count)); status != kSuccess)
      return status;
    text.remove_prefix(count);
  }
  return kSuccess;
}

/// Writes the characters as they are; no byte-order mark, no change of line ends.
Status WriteText(File& file, std::u16string_view text);

}  // namespace varnok
