// A tree of configuration names; its root is named after the script.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace varnok {

struct CCfgRefNode {
  explicit CCfgRefNode(std::u16string nodeName) : name(std::move(nodeName)) {}

  std::u16string name;
  std::uint64_t value = 0;
  std::vector<CCfgRefNode> children;
};

}  // namespace varnok
