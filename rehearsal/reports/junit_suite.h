// JUnit XML: suites of test cases, counted.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rehearsal/reports/element.h"

namespace varnok::rehearsal {

Element FailureElement(std::string_view type, std::string_view message);

class Suite {
 public:
  Suite(std::string_view name, std::string_view package) : name_(name), package_(package) {}

  /// `failure` may be null.
  void Case(std::string_view name, std::uint64_t microseconds, const Element* failure);
  std::string Markup() const;

 private:
  std::string_view name_;
  std::string_view package_;
  std::size_t tests_ = 0;
  std::size_t failures_ = 0;
  std::uint64_t microseconds_ = 0;
  std::string cases_;
};

/// The file that holds these suites.
std::string SuitesMarkup(std::string_view suites);

}  // namespace varnok::rehearsal
