#include "rehearsal/reports/road_tree.h"

#include <algorithm>
#include <queue>

namespace varnok::rehearsal {
namespace {

bool IsSameAnswer(const Answer& left, const Answer& right) {
  return left.question == right.question && left.text == right.text && left.isInvalid == right.isInvalid;
}

RoadTree& BranchFor(RoadTree& tree, const Answer& answer) {
  for (const auto& branch : tree.branches)
    if (IsSameAnswer(branch->answer, answer)) return *branch;
  tree.branches.push_back(std::make_unique<RoadTree>());
  tree.branches.back()->answer = answer;
  return *tree.branches.back();
}

void OpenPlaces(RoadTree& root, std::size_t limit) {
  const auto isSmaller = [](const RoadTree* left, const RoadTree* right) {
    return left->roads < right->roads;
  };
  std::priority_queue<RoadTree*, std::vector<RoadTree*>, decltype(isSmaller)> places(isSmaller);
  places.push(&root);
  std::size_t told = 1;
  while (!places.empty()) {
    RoadTree& place = *places.top();
    places.pop();
    const std::size_t items = place.branches.size() + place.ends.size();
    if (told + items - 1 > limit) continue;
    told += items - 1;
    place.isOpened = true;
    for (const auto& branch : place.branches) places.push(branch.get());
  }
}

}  // namespace

std::vector<std::size_t> RoadTree::Roads() const {
  std::vector<std::size_t> all = ends;
  for (const auto& branch : branches) {
    const std::vector<std::size_t> more = branch->Roads();
    all.insert(all.end(), more.begin(), more.end());
  }
  std::sort(all.begin(), all.end());
  return all;
}

RoadTree MakeRoadTree(const Report& report, std::size_t limit, std::size_t depth) {
  RoadTree root;
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    const std::vector<Answer>& answers = report.roads[i].answers;
    RoadTree* place = &root;
    ++place->roads;
    for (std::size_t step = 0; step < std::min(answers.size(), depth); ++step) {
      place = &BranchFor(*place, answers[step]);
      ++place->roads;
    }
    place->ends.push_back(i);
  }
  OpenPlaces(root, limit);
  return root;
}

}  // namespace varnok::rehearsal
