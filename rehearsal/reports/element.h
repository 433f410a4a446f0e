// HTML and XML out of values. An element escapes whatever is put into it; there is no way to put in markup
// other than another element.
//
//   Element("p").Class("leaf").Text(name).Add(Element("b").Text("status 0"))
#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace varnok::rehearsal {

class Element {
 public:
  /// `tag` and the attributes' names are the program's own words.
  explicit Element(std::string_view tag) : tag_(tag) {}

  /// `value` is made printable and escaped.
  Element& Set(std::string_view attribute, std::string_view value);
  template <std::integral Number>
  Element& Set(std::string_view attribute, Number value) {
    return Set(attribute, std::to_string(value));
  }
  /// An attribute without a value.
  Element& Set(std::string_view attribute);
  Element& Class(std::string_view names) { return Set("class", names); }
  /// `text` is made printable and escaped.
  Element& Text(std::string_view text);
  Element& Add(const Element& child);
  /// A style sheet of the program's own, as it stands.
  Element& Style(std::string_view sheet);

  bool IsEmpty() const { return content_.empty(); }
  std::string Markup() const;

 private:
  std::string tag_;
  std::string attributes_;
  std::string content_;
};

}  // namespace varnok::rehearsal
