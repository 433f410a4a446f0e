// Typed reading of board.json: every value is checked, every key is accounted for, and an error names the
// key's path.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/error.h"
#include "sim/json_value.h"

namespace varnok::sim {

/// One object of board.json. Numbers are JSON numbers or texts such as "0xC0". All operations throw
/// BoardError.
class JsonObject {
 public:
  /// `path` is where the object stands: empty for the root, else like "controllers[1].identity".
  JsonObject(const JsonValue& value, std::string path);

  bool Has(std::string_view key) const { return value_.Find(key) != nullptr; }
  std::uint32_t Number(std::string_view key, std::uint32_t fallback, std::uint32_t low, std::uint32_t high);
  std::optional<std::uint32_t> OptionalNumber(std::string_view key, std::uint32_t low, std::uint32_t high);
  /// A byte that must be there.
  std::uint8_t RequiredByte(std::string_view key);
  std::uint8_t Byte(std::string_view key, std::uint8_t fallback);
  bool Boolean(std::string_view key, bool fallback);
  std::string Text(std::string_view key, std::string_view fallback);
  std::string RequiredText(std::string_view key);
  /// An array of bytes; empty when absent.
  std::vector<std::uint8_t> ByteArray(std::string_view key);
  /// The object at `key`; an empty one when absent.
  JsonObject Child(std::string_view key);
  /// The objects of the array at `key`; none when absent.
  std::vector<JsonObject> Children(std::string_view key);

  /// Refuses every key that was not asked for.
  void Finish() const;
  /// Throws with the path of `key` in front of `complaint`.
  [[noreturn]] void Fail(std::string_view key, const std::string& complaint) const;
  std::string PathOf(std::string_view key) const;

 private:
  const JsonValue* Find(std::string_view key);
  [[noreturn]] void FailNumber(std::string_view key, const JsonValue& value, std::uint32_t low,
                               std::uint32_t high) const;

  const JsonValue& value_;
  std::string path_;
  std::vector<bool> isKnown_;  // of the members
};

}  // namespace varnok::sim
