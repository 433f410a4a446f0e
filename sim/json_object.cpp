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

/// The number that a value holds; nothing when it is none in the range.
std::optional<std::uint32_t> NumberIn(const JsonValue& value, std::uint32_t low, std::uint32_t high) {
  std::optional<std::uint64_t> number;
  if (value.isWhole) number = value.number;
  if (value.kind == Kind::Text) number = ParseNumber(value.text);
  if (!number || *number < low || *number > high) return std::nullopt;
  return static_cast<std::uint32_t>(*number);
}

}  // namespace

JsonObject::JsonObject(const JsonValue& value, std::string path)
    : value_(value), path_(std::move(path)), isKnown_(value.members.size()) {
  if (value.kind != Kind::Object)
    throw BoardError((path_.empty() ? "the whole" : path_) + ": must be an object");
}

void JsonObject::Fail(std::string_view key, const std::string& complaint) const {
  throw BoardError(PathOf(key) + ": " + complaint);
}

std::string JsonObject::PathOf(std::string_view key) const {
  std::string path = path_;
  if (!path.empty()) path += '.';
  return path.append(key);
}

const JsonValue* JsonObject::Find(std::string_view key) {
  for (std::size_t i = 0; i < value_.members.size(); ++i) {
    if (value_.members[i].key != key) continue;
    isKnown_[i] = true;
    return &value_.members[i].value;
  }
  return nullptr;
}

void JsonObject::FailNumber(std::string_view key, const JsonValue& value, std::uint32_t low,
                            std::uint32_t high) const {
  Fail(key, Shown(value) + " is not a number from " + std::to_string(low) + " to " + std::to_string(high));
}

std::optional<std::uint32_t> JsonObject::OptionalNumber(std::string_view key, std::uint32_t low,
                                                        std::uint32_t high) {
  const JsonValue* value = Find(key);
  if (value == nullptr) return std::nullopt;
  const auto number = NumberIn(*value, low, high);
  if (!number) FailNumber(key, *value, low, high);
  return number;
}

std::uint32_t JsonObject::Number(std::string_view key, std::uint32_t fallback, std::uint32_t low,
                                 std::uint32_t high) {
  return OptionalNumber(key, low, high).value_or(fallback);
}

std::uint8_t JsonObject::Byte(std::string_view key, std::uint8_t fallback) {
  return static_cast<std::uint8_t>(Number(key, fallback, 0, 0xFF));
}

std::uint8_t JsonObject::RequiredByte(std::string_view key) {
  if (!Has(key)) Fail(key, "is missing");
  return Byte(key, 0);
}

bool JsonObject::Boolean(std::string_view key, bool fallback) {
  const JsonValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (value->kind != Kind::Boolean) Fail(key, "must be true or false");
  return value->number != 0;
}

std::string JsonObject::Text(std::string_view key, std::string_view fallback) {
  const JsonValue* value = Find(key);
  if (value == nullptr) return std::string(fallback);
  if (value->kind != Kind::Text) Fail(key, "must be a text");
  return value->text;
}

std::string JsonObject::RequiredText(std::string_view key) {
  if (!Has(key)) Fail(key, "is missing");
  return Text(key, "");
}

std::vector<std::uint8_t> JsonObject::ByteArray(std::string_view key) {
  std::vector<std::uint8_t> bytes;
  const JsonValue* value = Find(key);
  if (value == nullptr) return bytes;
  if (value->kind != Kind::Array) Fail(key, "must be an array of bytes");
  for (const JsonValue& element : value->elements) {
    const auto byte = NumberIn(element, 0, 0xFF);
    if (!byte) FailNumber(std::string(key) + "[" + std::to_string(bytes.size()) + "]", element, 0, 0xFF);
    bytes.push_back(static_cast<std::uint8_t>(*byte));
  }
  return bytes;
}

JsonObject JsonObject::Child(std::string_view key) {
  const JsonValue* value = Find(key);
  return {value == nullptr ? EmptyObject() : *value, PathOf(key)};
}

std::vector<JsonObject> JsonObject::Children(std::string_view key) {
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
  for (std::size_t i = 0; i < value_.members.size(); ++i)
    if (!isKnown_[i]) Fail(value_.members[i].key, "unknown key");
}

}  // namespace varnok::sim
