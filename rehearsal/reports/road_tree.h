// Roads as a tree: what they were asked and what was answered, common beginnings once.
#pragma once

#include <memory>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

struct RoadTree {
  Answer answer{};  ///< that leads here; nothing at the root
  std::vector<std::unique_ptr<RoadTree>> branches{};
  std::vector<std::size_t> ends{};  ///< roads that end here, or whose further answers were cut
  std::size_t roads = 0;            ///< that come through here
  bool isOpened = false;            ///< its branches are told one by one; else it is told as a bundle

  /// All roads that come through here.
  std::vector<std::size_t> Roads() const;
};

/// The whole tree. Answers of a road past `depth` are cut. Opened are the places with most roads, as long as
/// no more than `limit` roads and bundles of roads are told.
RoadTree MakeRoadTree(const Report& report, std::size_t limit, std::size_t depth);

}  // namespace varnok::rehearsal
