#include "sim/json_object.h"

#include <charconv>
#include <utility>

namespace varnok::sim {
namespace {

using Kind = JsonValue::Kind;

const JsonValue& EmptyObject() {
  static const JsonValue empty = [] {
    JsonValue object;
    object.kind = Kind::Object;
    return object;
  }();
  return empty;
}

/// A value as an error names it.
std::string Shown(const JsonValue& value) {
  if (value.kind == Kind::Array) return "an array";
  if (value.kind == Kind::Object) return "an object";
  return value.kind == Kind::Text ? "\"" + value.text + "\"" : value.text;
}

/// "0x1F" or "31"; nothing for any other text.
std::optional<std::uint64_t> ParseNumber(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
  }
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

JsonObject::JsonObject(const JsonValue& value, std::string path) : value_(value), path_(std::move(path)) {
  if (value.kind != Kind::Object)
    throw BoardError((path_.empty() ? "the whole" : path_) + ": must be an object");
}

void JsonObject::Fail(const std::string& key, const std::string& complaint) const {
  throw BoardError(PathOf(key) + ": " + complaint);
}

const JsonValue* JsonObject::Find(const std::string& key) {
  known_.insert(key);
  return value_.Find(key);
}

std::uint32_t JsonObject::ToNumber(const JsonValue& value, const std::string& key, std::uint32_t low,
                                   std::uint32_t high) const {
  std::optional<std::uint64_t> number;
  if (value.isWhole) number = value.number;
  if (value.kind == Kind::Text) number = ParseNumber(value.text);
  if (!number || *number < low || *number > high) {
    Fail(key, Shown(value) + " is not a number from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return static_cast<std::uint32_t>(*number);
}

std::optional<std::uint32_t> JsonObject::OptionalNumber(const std::string& key, std::uint32_t low,
                                                        std::uint32_t high) {
  const JsonValue* value = Find(key);
  if (value == nullptr) return std::nullopt;
  return ToNumber(*value, key, low, high);
}

std::uint32_t JsonObject::Number(const std::string& key, std::uint32_t fallback, std::uint32_t low,
                                 std::uint32_t high) {
  return OptionalNumber(key, low, high).value_or(fallback);
}

std::uint8_t JsonObject::Byte(const std::string& key, std::uint8_t fallback) {
  return static_cast<std::uint8_t>(Number(key, fallback, 0, 0xFF));
}

std::uint8_t JsonObject::RequiredByte(const std::string& key) {
  if (!Has(key)) Fail(key, "is missing");
  return Byte(key, 0);
}

bool JsonObject::Boolean(const std::string& key, bool fallback) {
  const JsonValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (value->kind != Kind::Boolean) Fail(key, "must be true or false");
  return value->number != 0;
}

std::string JsonObject::Text(const std::string& key, const std::string& fallback) {
  const JsonValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (value->kind != Kind::Text) Fail(key, "must be a text");
  return value->text;
}

std::string JsonObject::RequiredText(const std::string& key) {
  if (!Has(key)) Fail(key, "is missing");
  return Text(key, "");
}

std::vector<std::uint8_t> JsonObject::ByteArray(const std::string& key) {
  std::vector<std::uint8_t> bytes;
  const JsonValue* value = Find(key);
  if (value == nullptr) return bytes;
  if (value->kind != Kind::Array) Fail(key, "must be an array of bytes");
  for (const JsonValue& element : value->elements) {
    const std::string place = key + "[" + std::to_string(bytes.size()) + "]";
    bytes.push_back(static_cast<std::uint8_t>(ToNumber(element, place, 0, 0xFF)));
  }
  return bytes;
}

JsonObject JsonObject::Child(const std::string& key) {
  const JsonValue* value = Find(key);
  return JsonObject(value == nullptr ? EmptyObject() : *value, PathOf(key));
}

std::vector<JsonObject> JsonObject::Children(const std::string& key) {
  std::vector<JsonObject> children;
  const JsonValue* value = Find(key);
  if (value == nullptr) return children;
  if (value->kind != Kind::Array) Fail(key, "must be an array of objects");
  for (const JsonValue& element : value->elements) {
    children.emplace_back(element, PathOf(key) + "[" + std::to_string(children.size()) + "]");
  }
  return children;
}

void JsonObject::Finish() const {
  for (const auto& [key, value] : value_.members) {
    if (!known_.contains(key)) Fail(key, "unknown key");
  }
}

}  // namespace varnok::sim
