// Bytes on a wire, in an image or in a table, least significant first. A reader never leaves its bytes: what
// is not there reads as 0 and is remembered, so that a whole record is taken first and judged once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace varnok {

class ByteReader {
 public:
  constexpr explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  constexpr std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }
  constexpr std::uint16_t Word() { return static_cast<std::uint16_t>(Number(2)); }
  constexpr std::uint32_t Dword() { return static_cast<std::uint32_t>(Number(4)); }
  /// `width` bytes as one number, at most 8.
  constexpr std::uint64_t Number(std::size_t width) {
    std::uint64_t number = 0;
    std::span<const std::uint8_t> taken = Take(width);
    for (std::size_t i = taken.size(); i > 0; --i) number = number << 8 | taken[i - 1];
    return number;
  }
  /// The next `count` bytes, or what is left of them.
  constexpr std::span<const std::uint8_t> Take(std::size_t count) {
    hasFailed_ = hasFailed_ || count > bytes_.size();
    std::span<const std::uint8_t> taken = bytes_.first(std::min(count, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }
  constexpr void Skip(std::size_t count) { static_cast<void>(Take(count)); }

  constexpr std::span<const std::uint8_t> Rest() const { return bytes_; }
  /// More was asked for than there was.
  constexpr bool HasFailed() const { return hasFailed_; }

 private:
  std::span<const std::uint8_t> bytes_;
  bool hasFailed_ = false;
};

/// The number of `width` bytes at `offset`; bytes that are not there count as 0.
constexpr std::uint64_t NumberAt(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t width) {
  return ByteReader(bytes.subspan(std::min(offset, bytes.size()))).Number(width);
}
constexpr std::uint16_t WordAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(NumberAt(bytes, offset, 2));
}
constexpr std::uint32_t DwordAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(NumberAt(bytes, offset, 4));
}

/// Fills bytes that somebody else holds; what does not fit is dropped and remembered.
class ByteWriter {
 public:
  constexpr explicit ByteWriter(std::span<std::uint8_t> bytes) : bytes_(bytes) {}

  constexpr ByteWriter& Byte(std::uint8_t value) { return Number(value, 1); }
  constexpr ByteWriter& Word(std::uint16_t value) { return Number(value, 2); }
  constexpr ByteWriter& Dword(std::uint32_t value) { return Number(value, 4); }
  constexpr ByteWriter& Number(std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i, value >>= 8) Put(static_cast<std::uint8_t>(value));
    return *this;
  }
  constexpr ByteWriter& Bytes(std::span<const std::uint8_t> bytes) {
    for (std::uint8_t byte : bytes) Put(byte);
    return *this;
  }

  /// The number of bytes written.
  constexpr std::size_t Length() const { return length_; }
  /// More was written than there was room for.
  constexpr bool HasFailed() const { return hasFailed_; }

 private:
  constexpr void Put(std::uint8_t byte) {
    if (length_ == bytes_.size())
      hasFailed_ = true;
    else
      bytes_[length_++] = byte;
  }

  std::span<std::uint8_t> bytes_;
  std::size_t length_ = 0;
  bool hasFailed_ = false;
};

}  // namespace varnok
