// Lists and bytes that tests write as one text.
#pragma once

#include <cstdint>
#include <sstream>
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

/// Bytes written as hexadecimal numbers.
inline std::vector<std::uint8_t> BytesOf(const std::string& hex) {
  std::istringstream text(hex);
  std::vector<std::uint8_t> bytes;
  for (unsigned byte = 0; text >> std::hex >> byte;) bytes.push_back(static_cast<std::uint8_t>(byte));
  return bytes;
}

}  // namespace varnok::testing
