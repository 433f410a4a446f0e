#include <algorithm>
#include <map>

#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/road_tree.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kToldRoads = 256;  // and bundles of roads
constexpr std::size_t kUnfolded = 48;    // a tree of so many roads stands unfolded
constexpr std::size_t kDepth = 40;       // of nested questions

class RoadWriter {
 public:
  explicit RoadWriter(const Report& report)
      : report_(report), isUnfolded_(report.roads.size() <= kUnfolded) {}

  /// What comes at a place of the tree: ends of roads, and questions with their answers.
  void AddPlace(Element& parent, const RoadTree& tree, std::size_t depth) const {
    for (const std::size_t road : tree.ends) parent.Add(Leaf(road));
    // Branches of one question stand together; mostly there is one question at a place.
    std::vector<std::size_t> asked;
    for (const auto& branch : tree.branches)
      if (std::find(asked.begin(), asked.end(), branch->answer.question) == asked.end())
        asked.push_back(branch->answer.question);
    for (const std::size_t question : asked) AddQuestion(parent, tree, question, depth);
  }

 private:
  void AddQuestion(Element& parent, const RoadTree& tree, std::size_t index, std::size_t depth) const {
    Element line = QuestionLine(report_.questions[index]);
    // Where every road goes the same way there is nothing to choose from.
    if (tree.branches.size() == 1 && tree.ends.empty() && tree.branches.front()->isOpened) {
      const RoadTree& only = *tree.branches.front();
      line.Text(" ").Add(Element("span").Class("answer only").Text("→ " + AnswerOf(only)));
      parent.Add(line);
      AddPlace(parent, only, depth);
      return;
    }
    parent.Add(line);
    Element list("ul");
    list.Class(depth < 10 ? "answers" : "answers deep");
    for (const auto& branch : tree.branches) {
      if (branch->answer.question != index) continue;
      Element item("li");
      AddBranch(item, *branch, depth);
      list.Add(item);
    }
    parent.Add(list);
  }

  std::string AnswerOf(const RoadTree& branch) const {
    return AnswerWords(report_.questions[branch.answer.question], branch.answer);
  }

  void AddBranch(Element& item, const RoadTree& branch, std::size_t depth) const {
    Element answer("span");
    answer.Class("answer").Text(AnswerOf(branch));
    const bool isEnd = branch.branches.empty() && branch.ends.size() == 1;
    if (isEnd || !branch.isOpened) {
      item.Class("single").Add(answer).Add(isEnd ? Leaf(branch.ends.front()) : Bundle(branch.Roads()));
      return;
    }
    Element summary("span");
    summary.Add(answer).Add(Element("span").Class("count").Text(Count(branch.roads, "road")));
    Element fold = Foldable(summary, isUnfolded_ || depth == 0);
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

  Element Leaf(std::size_t index) const {
    const Road& road = report_.roads[index];
    Element leaf("p");
    leaf.Class(road.run.exitStatus == 0 || road.joins ? "leaf" : "leaf failed")
        .Set("id", "road-" + std::to_string(index + 1))
        .Add(Element("b").Text(RoadName(index)));
    if (road.answers.size() > kDepth)
      leaf.Text(", after " + Count(road.answers.size() - kDepth, "more answer"));
    if (road.joins) return leaf.Text(" goes on as " + RoadName(*road.joins));
    leaf.Text(" " + EndWords(road.run.exitStatus, road.run.message) + " · " +
              Count(road.run.requests, "request") + ", " + Grouped(road.run.writes) + " changed the board" +
              " · " + TimeWords(road.run.microseconds) + " · ");
    leaf.Add(BoardLink(road.run.board));
    if (road.run.board < report_.boards.size())
      leaf.Text(", " + ChangeSummary(report_.boards[road.run.board]));
    return leaf;
  }

  /// Roads that are not told one by one: how they end.
  Element Bundle(const std::vector<std::size_t>& roads) const {
    std::map<int, std::size_t> byStatus;
    std::map<std::size_t, std::size_t> byBoard;
    for (const std::size_t road : roads) {
      if (report_.roads[road].joins) continue;
      ++byStatus[report_.roads[road].run.exitStatus];
      ++byBoard[report_.roads[road].run.board];
    }
    std::string text = " (" + Ranges(FromOne(roads), 4) + ")";
    std::size_t ended = 0;
    for (const auto& [status, count] : byStatus) {
      text += " · " + Grouped(count) + " with status " + std::to_string(status);
      ended += count;
    }
    if (ended < roads.size()) text += " · " + Grouped(roads.size() - ended) + " go on as another road";
    if (!byBoard.empty())
      text += byBoard.size() == 1 ? " · board " + BoardName(byBoard.begin()->first)
                                  : " · " + Count(byBoard.size(), "different board");
    const bool isFailed = byStatus.size() > (byStatus.contains(0) ? 1U : 0U);
    return Element("p")
        .Class(isFailed ? "leaf bundle failed" : "leaf bundle")
        .Add(Element("b").Text(Count(roads.size(), "road")))
        .Text(text);
  }

  const Report& report_;
  bool isUnfolded_;
};

}  // namespace

Element RoadsChapter(const Report& report) {
  Element chapter = Chapter("roads", "Roads");
  chapter.Add(Aside(report.isAllRoads ? "Every combination of answers that can matter, and what it leaves."
                                      : "One road was rehearsed."));
  if (report.roads.size() > kToldRoads)
    chapter.Add(Aside("Of " + Count(report.roads.size(), "road") +
                      " those with much in common are told together; the JSON has each."));
  Element list("div");
  list.Class("tree");
  RoadWriter(report).AddPlace(list, MakeRoadTree(report, kToldRoads, kDepth), 0);
  return chapter.Add(list);
}

}  // namespace varnok::rehearsal
