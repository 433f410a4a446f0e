#include "rehearsal/reports/element.h"

#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

void AppendEscaped(std::string& markup, std::string_view text) {
  for (const char c : Printable(text)) {
    switch (c) {
      case '&':
        markup += "&amp;";
        break;
      case '<':
        markup += "&lt;";
        break;
      case '>':
        markup += "&gt;";
        break;
      case '"':
        markup += "&quot;";
        break;
      case '\'':
        markup += "&#39;";
        break;
      default:
        markup += c;
    }
  }
}

}  // namespace

Element& Element::Set(std::string_view attribute, std::string_view value) {
  attributes_.append(" ").append(attribute).append("=\"");
  AppendEscaped(attributes_, value);
  attributes_ += '"';
  return *this;
}

Element& Element::Set(std::string_view attribute) {
  attributes_.append(" ").append(attribute);
  return *this;
}

Element& Element::Text(std::string_view text) {
  AppendEscaped(content_, text);
  return *this;
}

Element& Element::Add(const Element& child) {
  content_ += child.Markup();
  return *this;
}

Element& Element::Style(std::string_view sheet) {
  content_.append("<style>").append(sheet).append("</style>");
  return *this;
}

std::string Element::Markup() const {
  // The two elements of a page that have no end (HTML, section 13.1.2).
  const bool isVoid = tag_ == "meta" || tag_ == "br";
  std::string markup = "<" + tag_ + attributes_ + ">";
  return isVoid ? markup : markup + content_ + "</" + tag_ + ">";
}

}  // namespace varnok::rehearsal
