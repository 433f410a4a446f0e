// A JSON value as it stands in a file. What reads the text is a library in one source file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sim/image.h"

namespace varnok::sim {

struct JsonMember;

struct JsonValue {
  enum class Kind { Null, Boolean, Number, Text, Array, Object };

  Kind kind = Kind::Null;
  std::uint64_t number = 0;  ///< of a boolean or a whole number that is not negative
  bool isWhole = false;      ///< a number that `number` holds
  std::string text;          ///< a text, or a number as an error shows it
  std::vector<JsonValue> elements;
  std::vector<JsonMember> members;

  /// The member of an object; null when there is none.
  const JsonValue* Find(std::string_view key) const;
};

struct JsonMember {
  std::string key;
  JsonValue value;
};

/// The longest array, the largest object, and the deepest nesting, that a board description may have.
inline constexpr std::size_t kLongestArray = 65536;
inline constexpr std::size_t kMostMembers = 64;
inline constexpr std::size_t kDeepestNesting = 32;

/// Reads JSON with comments. Throws BoardError; a key that stands twice is one, since one of its values would
/// be lost.
JsonValue ParseJson(const Bytes& text);

}  // namespace varnok::sim
