// Lists in the tests of scripts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnok::testing {

/// The parts of a list that is written as "a; b; c".
inline std::vector<std::string> Split(std::string_view list) {
  std::vector<std::string> parts;
  for (std::size_t end = 0; end != list.npos; list.remove_prefix(end == list.npos ? 0 : end + 2)) {
    end = list.find("; ");
    parts.emplace_back(list.substr(0, end));
  }
  return parts;
}

}  // namespace varnok::testing
