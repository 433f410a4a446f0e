#include "sim/json_value.h"

#include <nlohmann/json.hpp>

#include "sim/error.h"

namespace varnok::sim {
namespace {

/// Takes the parser's events and builds the values, so that hostile text is refused where it stands.
class JsonBuilder : public nlohmann::json::json_sax_t {
 public:
  explicit JsonBuilder(JsonValue& root) : root_(root) {}

  bool null() override { return Scalar(JsonValue::Kind::Null, "null"); }
  bool boolean(bool value) override {
    return Scalar(JsonValue::Kind::Boolean, value ? "true" : "false", value ? 1 : 0, false);
  }
  bool number_integer(number_integer_t value) override {
    return Scalar(JsonValue::Kind::Number, std::to_string(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    return Scalar(JsonValue::Kind::Number, std::to_string(value), value, true);
  }
  bool number_float(number_float_t, const string_t& shown) override {
    return Scalar(JsonValue::Kind::Number, shown);
  }
  bool string(string_t& value) override { return Scalar(JsonValue::Kind::Text, std::move(value)); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Begin(JsonValue::Kind::Object); }
  bool start_array(std::size_t) override { return Begin(JsonValue::Kind::Array); }
  bool end_object() override { return End(); }
  bool end_array() override { return End(); }
  bool key(string_t& name) override {
    JsonValue& object = *open_.back();
    if (object.Find(name) != nullptr) throw BoardError("\"" + name + "\" stands twice in one object");
    if (object.members.size() == kMostMembers)
      throw BoardError("an object has more than " + std::to_string(kMostMembers) + " keys");
    object.members.push_back({std::move(name), {}});
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& complaint) override {
    throw BoardError(complaint.what());
  }

 private:
  JsonValue& Next() {
    if (open_.empty()) return root_;
    JsonValue& outer = *open_.back();
    if (outer.kind == JsonValue::Kind::Object) return outer.members.back().value;
    if (outer.elements.size() == kLongestArray)
      throw BoardError("an array has more than " + std::to_string(kLongestArray) + " elements");
    return outer.elements.emplace_back();
  }
  bool Scalar(JsonValue::Kind kind, std::string text, std::uint64_t number = 0, bool isWhole = false) {
    JsonValue& value = Next();
    value.kind = kind;
    value.number = number;
    value.isWhole = isWhole;
    value.text = std::move(text);
    return true;
  }
  bool Begin(JsonValue::Kind kind) {
    if (open_.size() == kDeepestNesting)
      throw BoardError("it is nested more than " + std::to_string(kDeepestNesting) + " deep");
    JsonValue& value = Next();
    value.kind = kind;
    open_.push_back(&value);
    return true;
  }
  bool End() {
    open_.pop_back();
    return true;
  }

  JsonValue& root_;
  // What is open is the last element of what stands below it, so that nothing moves it.
  std::vector<JsonValue*> open_;
};

}  // namespace

const JsonValue* JsonValue::Find(std::string_view key) const {
  for (const JsonMember& member : members)
    if (member.key == key) return &member.value;
  return nullptr;
}

JsonValue ParseJson(const Bytes& text) {
  JsonValue root;
  JsonBuilder builder(root);
  // The comments say why a board is as it is.
  constexpr bool kToTheEnd = true, kComments = true;
  nlohmann::json::sax_parse(text.begin(), text.end(), &builder, nlohmann::json::input_format_t::json,
                            kToTheEnd, kComments);
  return root;
}

}  // namespace varnok::sim
