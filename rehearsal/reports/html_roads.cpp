#include <algorithm>

#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/road_tree.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kShownRoads = 256;
constexpr std::size_t kOpenRoads = 48;  // a tree of so many stands open
constexpr std::size_t kDepth = 40;      // of nested questions

class RoadWriter {
 public:
  RoadWriter(const Report& report, const RoadTree& tree)
      : report_(report), isOpen_(tree.roads <= kOpenRoads) {}

  /// What comes at a place of the tree: ends of roads, and questions with their answers.
  void AddPlace(Element& parent, const RoadTree& tree, std::size_t depth) const {
    for (const std::size_t road : tree.ends) parent.Add(Leaf(road));
    // Branches of one question stand together; mostly there is one question at a place.
    std::vector<std::size_t> asked;
    for (const auto& branch : tree.branches)
      if (branch->shown > 0 && std::find(asked.begin(), asked.end(), branch->answer.question) == asked.end())
        asked.push_back(branch->answer.question);
    for (const std::size_t question : asked) AddQuestion(parent, tree, question, depth);
    std::size_t left = 0;
    for (const auto& branch : tree.branches)
      if (branch->shown == 0) left += branch->roads;
    AddRest(parent, left, 0, "road");
  }

 private:
  void AddQuestion(Element& parent, const RoadTree& tree, std::size_t index, std::size_t depth) const {
    parent.Add(QuestionLine(report_.questions[index]));
    Element list("ul");
    list.Class(depth < 10 ? "answers" : "answers deep");
    for (const auto& branch : tree.branches) {
      if (branch->answer.question != index || branch->shown == 0) continue;
      Element item("li");
      AddBranch(item, *branch, depth);
      list.Add(item);
    }
    parent.Add(list);
  }

  void AddBranch(Element& item, const RoadTree& branch, std::size_t depth) const {
    const Element answer = AnswerText(branch.answer);
    if (branch.branches.empty() && branch.ends.size() == 1) {
      item.Class("single").Add(answer).Add(Leaf(branch.ends.front()));
      return;
    }
    Element summary("span");
    summary.Add(answer).Add(Element("span").Class("count").Text(Count(branch.roads, "road")));
    Element fold = Foldable(summary, isOpen_ || depth == 0);
    AddPlace(fold, branch, depth + 1);
    item.Add(fold);
  }

  static Element QuestionLine(const Question& question) {
    Element line("p");
    line.Class("question").Add(Element("span").Class("tag").Text(KindWord(question.kind))).Text(" ");
    line.Add(Element("span").Text(question.text.empty() ? "without a text" : question.text));
    if (question.line > 0)
      line.Text(" ").Add(Element("a")
                             .Class("place")
                             .Set("href", "#line-" + std::to_string(question.line))
                             .Text("line " + std::to_string(question.line)));
    return line;
  }

  Element AnswerText(const Answer& answer) const {
    return Element("span").Class("answer").Text(AnswerWords(report_.questions[answer.question], answer));
  }

  Element Leaf(std::size_t index) const {
    const Road& road = report_.roads[index];
    Element leaf("p");
    leaf.Class(road.run.exitStatus == 0 || road.joins ? "leaf" : "leaf failed")
        .Set("id", "road-" + std::to_string(index + 1))
        .Add(Element("b").Text(RoadName(index)));
    if (road.answers.size() > kDepth)
      leaf.Text(", after " + Count(road.answers.size() - kDepth, "more answer"));
    if (road.joins) {
      leaf.Text(" goes on as ")
          .Add(Element("a")
                   .Set("href", "#road-" + std::to_string(*road.joins + 1))
                   .Text(RoadName(*road.joins)));
      return leaf;
    }
    leaf.Text(" " + EndWords(road.run.exitStatus, road.run.message) + " · " +
              Count(road.run.writes, "write") + " of " + Count(road.run.requests, "request") + " · " +
              TimeWords(road.run.microseconds) + " · ");
    leaf.Add(BoardLink(road.run.board));
    if (road.run.board < report_.boards.size())
      leaf.Text(", " + ChangeSummary(report_.boards[road.run.board]));
    return leaf;
  }

  const Report& report_;
  bool isOpen_;
};

}  // namespace

Element RoadsChapter(const Report& report) {
  const RoadTree tree = MakeRoadTree(report, kShownRoads, kDepth);
  Element chapter = Chapter("roads", "Roads");
  chapter.Add(Aside(report.isAllRoads ? "Every combination of answers that can matter, and what it leaves."
                                      : "One road was rehearsed."));
  if (tree.shown < tree.roads)
    chapter.Add(Aside("The tree shows " + Grouped(tree.shown) + " of " + Count(tree.roads, "road") +
                      ", those that break first; the JSON has all."));
  Element list("div");
  list.Class("tree");
  RoadWriter(report, tree).AddPlace(list, tree, 0);
  return chapter.Add(list);
}

}  // namespace varnok::rehearsal
