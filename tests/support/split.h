// Lists that tests write as one text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnok::testing {

/// The parts of a list; of an empty one an empty part.
inline std::vector<std::string> Split(std::string_view list, std::string_view separator = "; ") {
  std::vector<std::string> parts;
  for (std::size_t end = 0; (end = list.find(separator)) != list.npos;
       list.remove_prefix(end + separator.size()))
    parts.emplace_back(list.substr(0, end));
  parts.emplace_back(list);
  return parts;
}

}  // namespace varnok::testing
