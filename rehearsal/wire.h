// Plain data as bytes, from a process to the one that forked it: the same build reads what it wrote. A type
// says once what it holds:
//
//   template <class Archive> void Transfer(Archive& archive, Answer& answer) {
//     archive(answer.question, answer.text, answer.isInvalid);
//   }
#pragma once

#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "boards/board_data.h"

namespace varnok::rehearsal {

using boards::Bytes;

class WireWriter {
 public:
  template <class... Values>
  void operator()(Values&... values) {
    (Put(values), ...);
  }
  Bytes bytes;

 private:
  void Raw(const void* from, std::size_t count) {
    const auto* first = static_cast<const std::uint8_t*>(from);
    bytes.insert(bytes.end(), first, first + count);
  }
  void Size(std::size_t size) { Raw(&size, sizeof size); }

  template <class T>
  void Put(T& value) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
      Raw(&value, sizeof value);
    else
      Transfer(*this, value);
  }
  void Put(std::string& text) {
    Size(text.size());
    Raw(text.data(), text.size());
  }
  template <class T>
  void Put(std::vector<T>& list) {
    Size(list.size());
    if constexpr (std::is_arithmetic_v<T>)
      Raw(list.data(), list.size() * sizeof(T));
    else
      for (T& each : list) Put(each);
  }
};

/// Reads what a WireWriter wrote. Bytes that end too early leave the rest empty and `hasFailed`.
class WireReader {
 public:
  explicit WireReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  template <class... Values>
  void operator()(Values&... values) {
    (Take(values), ...);
  }
  bool hasFailed = false;
  bool IsAtEnd() const { return rest_.empty(); }

 private:
  void Raw(void* to, std::size_t count) {
    hasFailed = hasFailed || count > rest_.size();
    if (hasFailed || count == 0) return;
    std::memcpy(to, rest_.data(), count);
    rest_ = rest_.subspan(count);
  }
  /// Of a list whose elements take at least `least` bytes.
  std::size_t Size(std::size_t least) {
    std::size_t size = 0;
    Raw(&size, sizeof size);
    hasFailed = hasFailed || size > rest_.size() / least;
    return hasFailed ? 0 : size;
  }

  template <class T>
  void Take(T& value) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
      Raw(&value, sizeof value);
    else
      Transfer(*this, value);
  }
  void Take(std::string& text) {
    text.resize(Size(1));
    Raw(text.data(), text.size());
  }
  template <class T>
  void Take(std::vector<T>& list) {
    if constexpr (std::is_arithmetic_v<T>) {
      list.resize(Size(sizeof(T)));
      Raw(list.data(), list.size() * sizeof(T));
    } else {
      list.resize(Size(1));
      for (T& each : list) Take(each);
    }
  }

  std::span<const std::uint8_t> rest_;
};

template <class T>
Bytes ToWire(T& value) {
  WireWriter writer;
  writer(value);
  return std::move(writer.bytes);
}

/// False for bytes that are not a whole T.
template <class T>
bool FromWire(std::span<const std::uint8_t> bytes, T& value) {
  WireReader reader(bytes);
  reader(value);
  return !reader.hasFailed && reader.IsAtEnd();
}

}  // namespace varnok::rehearsal
