#include "rehearsal/reports/text_report.h"

#include <algorithm>
#include <array>

#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/findings.h"
#include "rehearsal/reports/text_table.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

class TextWriter {
 public:
  TextWriter(const Report& report, bool isVerbose) : report_(report), isVerbose_(isVerbose) {}

  std::vector<std::string> Write() {
    Findings();
    if (report_.isAllRoads) {
      Questions();
      Roads();
      Boards();
    } else if (!report_.roads.empty()) {
      OneRoad(report_.roads.front().run);
    }
    Faults();
    if (report_.isAllRoads || report_.hasFaults) Speed();
    return std::move(lines_);
  }

 private:
  static constexpr std::size_t kWidth = 100;
  static constexpr std::size_t kShownRoads = 16;

  void Line(std::string text) { lines_.push_back(std::move(text)); }
  void Title(std::string text) {
    Line({});
    Line(std::move(text));
  }
  std::size_t Limit(std::size_t count, std::size_t limit) const {
    return isVerbose_ ? count : std::min(count, limit);
  }
  void Rest(std::size_t count, std::size_t shown, std::string_view noun) {
    if (count > shown)
      Line("  … " + Count(count - shown, std::string("more ").append(noun)) + ", --verbose shows all");
  }

  void Findings() {
    const std::vector<Finding> findings = FindingsOf(report_);
    Line(Printable(report_.package) + " on " + Printable(report_.board) + ": " + Verdict(report_, findings));
    for (const Finding& finding : findings) {
      Line("  " + std::string(WordOf(finding.weight)) + ": " + finding.title);
      Line("    " + finding.detail);
    }
  }

  void OneRoad(const Run& run) {
    Line("  " + EndWords(run.exitStatus, run.message) + "; " + Count(run.requests, "request") + ", " +
         Grouped(run.writes) + " of them changed the board; " + TimeWords(run.microseconds) +
         " on a real board, of them " + TimeWords(run.stalled) + " in waits of the program");
    if (run.board >= report_.boards.size()) return;
    const BoardAfter& board = report_.boards[run.board];
    Title("The board: " + ChangeSummary(board));
    if (isVerbose_ || !report_.hasFaults) Differences(board);
  }

  void Questions() {
    if (report_.questions.empty()) return;
    Title("Questions");
    TextTable table({true, false, true, false});
    const std::size_t shown = Limit(report_.questions.size(), 12);
    for (std::size_t i = 0; i < shown; ++i) {
      const Question& question = report_.questions[i];
      std::string text = Shortened(question.text, kWidth / 2);
      for (std::size_t item = 0; item < question.choices.size() && WidthOf(text) < kWidth; ++item)
        text += (item == 0 ? ": " : ", ") + std::to_string(item + 1) + " " +
                Shortened(question.choices[item], 30);
      text = Shortened(text, kWidth);
      table.Row({std::to_string(i + 1), std::string(KindWord(question.kind)),
                 question.line == 0 ? "" : "line " + std::to_string(question.line), text});
    }
    table.WriteTo(lines_);
    Rest(report_.questions.size(), shown, "question");
  }

  /// "1=2 3=Y": questions by their numbers.
  std::string AnswersOf(const Road& road) const {
    std::string text;
    for (const Answer& answer : road.answers)
      text += (text.empty() ? "" : " ") + std::to_string(answer.question + 1) + "=" +
              Shortened(answer.text, 16) + (answer.isInvalid ? " (refused)" : "");
    return text.empty() ? "no question" : isVerbose_ ? text : Shortened(text, kWidth);
  }

  /// Of those that go on as another one only their number, unless everything is asked for.
  void Roads() {
    Title(Count(report_.roads.size(), "road"));
    TextTable table({true, true, true, true, true, false, false});
    table.Row({"road", "status", "requests", "changes", "time", "board", "answers"});
    std::size_t ends = 0;
    std::size_t joining = 0;
    for (std::size_t i = 0; i < report_.roads.size(); ++i) {
      const Road& road = report_.roads[i];
      const std::string number = std::to_string(i + 1);
      (road.joins ? joining : ends) += 1;
      if (road.joins && isVerbose_)
        table.Row({number, "", "", "", "", "", AnswersOf(road) + ", then as " + RoadName(*road.joins)});
      else if (!road.joins && (isVerbose_ || ends <= kShownRoads))
        table.Row({number, std::to_string(road.run.exitStatus), Grouped(road.run.requests),
                   Grouped(road.run.writes), TimeWords(road.run.microseconds), BoardName(road.run.board),
                   AnswersOf(road)});
    }
    table.WriteTo(lines_);
    Rest(ends, Limit(ends, kShownRoads), "road");
    if (joining > 0 && !isVerbose_)
      Line("  " + Count(joining, "more road") + "" + std::string(joining == 1 ? " goes" : " go") +
           " on as one of them after other answers, --verbose shows which");
  }

  void Boards() {
    if (report_.boards.empty()) return;
    Title("What they leave");
    const std::size_t shown = Limit(report_.boards.size(), 8);
    for (std::size_t i = 0; i < shown; ++i) {
      Line("  board " + BoardName(i) + ": " + ChangeSummary(report_.boards[i]));
      if (isVerbose_) Differences(report_.boards[i]);
    }
    Rest(report_.boards.size(), shown, "board");
  }

  void Differences(const BoardAfter& board) {
    std::string place;
    for (const boards::Difference& difference : board.differences) {
      const std::string here =
          Printable(difference.part) + (difference.group.empty() ? "" : ", " + Printable(difference.group));
      if (difference.field.empty()) {
        Line("    " + here + ": " + DifferenceWords(difference));
        continue;
      }
      if (here != place) Line("    " + here);
      place = here;
      Line("      " + DifferenceWords(difference));
    }
  }

  void Faults() {
    if (!report_.hasFaults) return;
    Title(Count(report_.faults.size(), "fault") + ": " + FaultChoiceWords(report_));
    const auto counts = CountCells(report_);
    TextTable table({true, false});
    for (std::size_t i = 0; i < kCellCount; ++i)
      if (counts[i] > 0) table.Row({Grouped(counts[i]), std::string(WordsOf(static_cast<Cell>(i)).meaning)});
    table.WriteTo(lines_);
    const std::vector<FaultGroup> groups = GraveGroups(report_);
    const std::size_t shown = Limit(groups.size(), 8);
    for (std::size_t i = 0; i < shown; ++i) {
      const FaultGroup& group = groups[i];
      Line("  " + std::string(WordsOf(group.cell).title) + ", " + Count(group.Runs(), "run") + ": " +
           KindsWords(group.kinds, isVerbose_ ? group.kinds.size() : 3));
      Line("    " + PlaceWords(report_, group, isVerbose_ ? report_.faults.size() : 8) + ": " +
           Explanation(*group.example));
    }
    Rest(groups.size(), shown, "group");
  }

  void Speed() {
    std::string text = Count(report_.runs, "run") + " on " + Count(report_.cores, "core");
    if (report_.seconds > 0)
      text += ", " +
              Grouped(static_cast<std::size_t>(static_cast<double>(report_.runs) / report_.seconds /
                                               std::max(report_.cores, 1U))) +
              " a second and core";
    Title(text);
  }

  const Report& report_;
  bool isVerbose_;
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> TextReport(const Report& report, bool isVerbose) {
  return TextWriter(report, isVerbose).Write();
}

}  // namespace varnok::rehearsal
