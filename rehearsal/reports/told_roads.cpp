#include "rehearsal/reports/told_roads.h"

#include <algorithm>
#include <map>
#include <set>

namespace varnok::rehearsal {

std::vector<std::size_t> ToldRoads(const Report& report) {
  constexpr std::size_t kLimit = 12;
  const std::set<std::size_t> broken(report.brokenRoads.begin(), report.brokenRoads.end());
  std::map<std::size_t, std::size_t> byBoard;
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    const Run& run = report.roads[i].run;
    if (report.roads[i].joins || run.traffic.empty()) continue;
    const auto [place, isNew] = byBoard.emplace(run.board, i);
    if (!isNew && run.requests > report.roads[place->second].run.requests) place->second = i;
  }
  std::vector<std::size_t> roads;
  roads.reserve(byBoard.size());
  for (const auto& [board, road] : byBoard) roads.push_back(road);
  std::stable_partition(roads.begin(), roads.end(),
                        [&broken](std::size_t road) { return broken.contains(road); });
  roads.resize(std::min(roads.size(), kLimit));
  std::sort(roads.begin(), roads.end());
  return roads;
}

}  // namespace varnok::rehearsal
