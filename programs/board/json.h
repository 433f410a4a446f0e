// JSON for --json: values are put together here, the library that writes them stands behind json.cpp alone.
//
//   Json root = Json::Object();
//   root.Set("version", 1).Set("devices", Json::Array().Add("0").Add("2@C0"));
//   PrintLine(root.Text());
#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace varnok::companion {

class Json {
 public:
  Json();  ///< null
  Json(std::string_view text);
  Json(const std::string& text) : Json(std::string_view(text)) {}
  Json(const char* text) : Json(std::string_view(text)) {}
  Json(double number);
  template <std::same_as<bool> Boolean>
  Json(Boolean value) : Json(Truth{value}) {}
  template <std::integral Number>
  requires(!std::same_as<Number, bool>) Json(Number number)
      : Json(Whole{static_cast<std::int64_t>(number)}) {}
  Json(const Json& other);
  Json(Json&&) noexcept;
  Json& operator=(Json other) noexcept;
  ~Json();

  static Json Object();
  static Json Array();

  /// Keys keep the order in which they were set.
  Json& Set(std::string_view key, const Json& value);
  Json& Add(const Json& value);

  /// Indented text without a new line at its end. Bytes that are no UTF-8 become U+FFFD.
  std::string Text() const;

 private:
  struct Truth {
    bool value;
  };
  struct Whole {
    std::int64_t value;
  };
  explicit Json(Truth truth);
  explicit Json(Whole whole);
  struct Value;
  std::unique_ptr<Value> value_;
};

/// What `make` gives for each item.
template <typename Items, typename Make>
Json ListOf(const Items& items, Make make) {
  Json list = Json::Array();
  for (const auto& item : items) list.Add(make(item));
  return list;
}

}  // namespace varnok::companion
