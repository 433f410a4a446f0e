#include "rehearsal/reports/road_tree.h"

#include <algorithm>

namespace varnok::rehearsal {
namespace {

bool IsSameAnswer(const Answer& left, const Answer& right) {
  return left.question == right.question && left.text == right.text && left.isInvalid == right.isInvalid;
}

/// The roads to show: half of the room is kept for broken ones.
std::vector<bool> ChooseRoads(const Report& report, std::size_t limit) {
  std::vector<bool> isChosen(report.roads.size(), false);
  std::size_t room = limit;
  for (const std::size_t road : report.brokenRoads) {
    if (room <= limit / 2) break;
    isChosen[road] = true;
    --room;
  }
  for (std::size_t i = 0; i < isChosen.size() && room > 0; ++i) {
    if (isChosen[i]) continue;
    isChosen[i] = true;
    --room;
  }
  return isChosen;
}

RoadTree& BranchFor(RoadTree& tree, const Answer& answer) {
  for (const auto& branch : tree.branches)
    if (IsSameAnswer(branch->answer, answer)) return *branch;
  tree.branches.push_back(std::make_unique<RoadTree>());
  tree.branches.back()->answer = answer;
  return *tree.branches.back();
}

}  // namespace

RoadTree MakeRoadTree(const Report& report, std::size_t limit, std::size_t depth) {
  const std::vector<bool> isShown = ChooseRoads(report, limit);
  RoadTree root;
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    const std::vector<Answer>& answers = report.roads[i].answers;
    RoadTree* place = &root;
    for (std::size_t step = 0; step <= std::min(answers.size(), depth); ++step) {
      if (step > 0) place = &BranchFor(*place, answers[step - 1]);
      ++place->roads;
      place->shown += isShown[i] ? 1 : 0;
    }
    if (isShown[i]) place->ends.push_back(i);
  }
  return root;
}

}  // namespace varnok::rehearsal
