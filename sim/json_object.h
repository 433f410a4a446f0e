// Typed reading of board.json: every value is checked, every key is accounted for, and an error names the
// key's path.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
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

  bool Has(const std::string& key) const { return value_.Find(key) != nullptr; }
  std::uint32_t Number(const std::string& key, std::uint32_t fallback, std::uint32_t low, std::uint32_t high);
  std::optional<std::uint32_t> OptionalNumber(const std::string& key, std::uint32_t low, std::uint32_t high);
  /// A byte that must be there.
  std::uint8_t RequiredByte(const std::string& key);
  std::uint8_t Byte(const std::string& key, std::uint8_t fallback);
  bool Boolean(const std::string& key, bool fallback);
  std::string Text(const std::string& key, const std::string& fallback);
  std::string RequiredText(const std::string& key);
  /// An array of bytes; empty when absent.
  std::vector<std::uint8_t> ByteArray(const std::string& key);
  /// The object at `key`; an empty one when absent.
  JsonObject Child(const std::string& key);
  /// The objects of the array at `key`; none when absent.
  std::vector<JsonObject> Children(const std::string& key);

  /// Refuses every key that was not asked for.
  void Finish() const;
  /// Throws with the path of `key` in front of `complaint`.
  [[noreturn]] void Fail(const std::string& key, const std::string& complaint) const;
  std::string PathOf(const std::string& key) const { return path_.empty() ? key : path_ + "." + key; }

 private:
  const JsonValue* Find(const std::string& key);
  std::uint32_t ToNumber(const JsonValue& value, const std::string& key, std::uint32_t low,
                         std::uint32_t high) const;

  const JsonValue& value_;
  std::string path_;
  std::set<std::string> known_;
};

}  // namespace varnok::sim
