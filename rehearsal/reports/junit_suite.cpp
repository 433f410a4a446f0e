#include "rehearsal/reports/junit_suite.h"

#include "boards/traffic.h"

namespace varnok::rehearsal {

Element FailureElement(std::string_view type, std::string_view message) {
  return Element("failure").Set("type", type).Set("message", message);
}

void Suite::Case(std::string_view name, std::uint64_t microseconds, const Element* failure) {
  Element element("testcase");
  element.Set("classname", package_).Set("name", name).Set("time", boards::SecondsText(microseconds));
  if (failure != nullptr) element.Add(*failure);
  ++tests_;
  failures_ += failure != nullptr ? 1 : 0;
  microseconds_ += microseconds;
  cases_ += element.Markup() + "\n";
}

std::string Suite::Markup() const {
  std::string open = Element("testsuite")
                         .Set("name", name_)
                         .Set("tests", tests_)
                         .Set("failures", failures_)
                         .Set("errors", 0)
                         .Set("time", boards::SecondsText(microseconds_))
                         .Markup();
  constexpr std::string_view kEnd = "</testsuite>";
  open.insert(open.size() - kEnd.size(), "\n" + cases_);
  return open + "\n";
}

std::string SuitesMarkup(std::string_view suites) {
  std::string markup = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
  return markup.append(suites).append("</testsuites>\n");
}

}  // namespace varnok::rehearsal
