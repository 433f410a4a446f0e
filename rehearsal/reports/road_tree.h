// Roads as a tree: what they were asked and what was answered, common beginnings once.
#pragma once

#include <memory>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

struct RoadTree {
  Answer answer{};  ///< that leads here; nothing at the root
  std::vector<std::unique_ptr<RoadTree>> branches{};
  std::vector<std::size_t> ends{};  ///< roads that end here
  std::size_t roads = 0;            ///< that come through here, those that were left out too
  std::size_t shown = 0;            ///< of them in the tree
};

/// A tree of at most `limit` roads: broken ones first, then the first ones. Steps of a road past `depth` are
/// cut.
RoadTree MakeRoadTree(const Report& report, std::size_t limit, std::size_t depth);

}  // namespace varnok::rehearsal
