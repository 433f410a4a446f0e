#include "programs/board/json.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace varnok::companion {

struct Json::Value {  // NOLINT(bugprone-exception-escape): the library's destructor throws nothing
  nlohmann::ordered_json json;
};

Json::Json() : value_(std::make_unique<Value>()) {}
Json::Json(std::string_view text) : value_(std::make_unique<Value>(Value{text})) {}
Json::Json(double number) : value_(std::make_unique<Value>(Value{number})) {}
Json::Json(Truth truth) : value_(std::make_unique<Value>(Value{truth.value})) {}
Json::Json(Whole whole) : value_(std::make_unique<Value>(Value{whole.value})) {}
Json::Json(const Json& other) : value_(std::make_unique<Value>(*other.value_)) {}
Json::Json(Json&&) noexcept = default;
Json& Json::operator=(Json other) noexcept {
  std::swap(value_, other.value_);
  return *this;
}
Json::~Json() = default;

Json Json::Object() {
  Json json;
  json.value_->json = nlohmann::ordered_json::object();
  return json;
}
Json Json::Array() {
  Json json;
  json.value_->json = nlohmann::ordered_json::array();
  return json;
}

Json& Json::Set(std::string_view key, const Json& value) {
  value_->json[std::string(key)] = value.value_->json;
  return *this;
}
Json& Json::Add(const Json& value) {
  value_->json.push_back(value.value_->json);
  return *this;
}

std::string Json::Text() const {
  return value_->json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace varnok::companion
