#include "rehearsal/reports/findings.h"

#include <algorithm>
#include <array>

#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

struct CellRule {
  Cell cell;
  Weight weight;
  std::string_view rule;
};
constexpr CellRule kCellRules[] = {{Cell::Crashed, Weight::Grave, "crashed"},
                                   {Cell::FalseSuccess, Weight::Grave, "false-success"},
                                   {Cell::CannotBeShown, Weight::Grave, "cannot-be-shown"},
                                   {Cell::NoWayBack, Weight::Grave, "no-way-back"},
                                   {Cell::ToldSuccess, Weight::Warning, "told-success"},
                                   {Cell::Stuck, Weight::Warning, "stuck"},
                                   {Cell::Endless, Weight::Warning, "endless"}};

/// How many runs of a kind of result the same package does not mend.
std::size_t CountLasting(const Report& report, Cell cell) {
  return static_cast<std::size_t>(
      std::count_if(report.faults.begin(), report.faults.end(),
                    [cell](const FaultRun& run) { return CellOf(run) == cell && !run.rerunReaches; }));
}

void AddFaults(const Report& report, std::vector<Finding>& findings) {
  const auto counts = CountCells(report);
  const std::vector<FaultGroup> groups = GraveGroups(report);
  for (const CellRule& row : kCellRules) {
    const std::size_t count = counts[static_cast<std::size_t>(row.cell)];
    if (count == 0) continue;
    const auto group = std::find_if(groups.begin(), groups.end(),
                                    [&row](const FaultGroup& g) { return g.cell == row.cell; });
    Finding finding{row.weight, row.rule,
                    Count(count, "fault") + ": " + std::string(WordsOf(row.cell).meaning)};
    if (row.cell == Cell::CannotBeShown) {
      // After a power cut amid a write this cannot be otherwise; what counts is the way out.
      const std::size_t lasting = CountLasting(report, row.cell);
      finding.weight = lasting > 0 ? Weight::Grave : Weight::Warning;
      finding.title += lasting > 0 ? "; a rerun does not mend " + Grouped(lasting) : "; a rerun mends it";
    }
    finding.detail = "of " + Grouped(report.faults.size()) + ", such as: " + KindsWords(group->kinds, 2) +
                     ", " + PlaceWords(report, *group, 6);
    finding.chapter = "faults";
    findings.push_back(std::move(finding));
  }
}

/// Why a road ends with another status than 0.
enum class Failure : std::uint8_t { Error, Probe, Purpose };

Failure FailureOf(const Report& report, const Road& road) {
  if (IsEndedByScript(road.run)) return Failure::Purpose;
  const bool hasFailingProbe =
      std::any_of(road.answers.begin(), road.answers.end(), [&report](const Answer& answer) {
        return report.questions[answer.question].kind == QuestionKind::Probe && answer.text == "failing";
      });
  return hasFailingProbe ? Failure::Probe : Failure::Error;
}

void AddRoads(const Report& report, std::vector<Finding>& findings) {
  std::array<std::vector<std::size_t>, 3> failed;  // before they wrote anything, by Failure
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    const Road& road = report.roads[i];
    if (!road.joins && road.run.exitStatus != 0 && road.run.writes == 0)
      failed[static_cast<std::size_t>(FailureOf(report, road))].push_back(i);
  }
  const auto add = [&](Weight weight, std::string_view rule, const std::vector<std::size_t>& roads,
                       const char* how) {
    if (roads.empty()) return;
    const Run& first = report.roads[roads.front()].run;
    findings.push_back({weight, rule, Count(roads.size(), "road") + how,
                        "road " + Ranges(FromOne(roads)) + ": " + EndWords(first.exitStatus, first.message),
                        "roads"});
  };
  add(Weight::Grave, "broken-road", report.brokenRoads, " with an error after something was written");
  add(Weight::Warning, "failed-road", failed[0], " with an error, nothing written");
  add(Weight::Remark, "failed-probe", failed[1], " with an error behind a probe that fails, nothing written");
  add(Weight::Remark, "ended-road", failed[2], " that the script ends by ERRORLEVEL, nothing written");
}

void AddScript(const Report& report, std::vector<Finding>& findings) {
  const std::vector<std::size_t> lines = report.UnreachedLines();
  // Without all roads a line that the one road does not reach says nothing.
  if (report.isAllRoads && !lines.empty())
    findings.push_back(
        {Weight::Warning, "unreached", Count(lines.size(), "line") + " of the script that no road reaches",
         "line " + Ranges(lines) + ", first: " + Shortened(report.script[lines.front() - 1].text, 60),
         "script"});
  if (report.isAllRoads && !report.unsetTags.empty()) {
    std::string tags;
    for (std::size_t i = 0; i < std::min<std::size_t>(report.unsetTags.size(), 12); ++i)
      tags += (i == 0 ? "" : ", ") + Shortened(report.unsetTags[i], 40);
    if (report.unsetTags.size() > 12) tags += ", …";
    findings.push_back({Weight::Warning, "unset-tag",
                        Count(report.unsetTags.size(), "tag") + " that no road sets", tags, "script"});
  }
}

void AddRemarks(const Report& report, std::vector<Finding>& findings) {
  if (report.roadsCut > 0)
    findings.push_back({Weight::Warning, "cut", Count(report.roadsCut, "alternative") + " left out",
                        "the limit of roads was reached: what lies behind them is not known", "roads"});
  const std::vector<std::vector<std::size_t>> groups = report.EqualRoads();
  if (groups.empty()) return;
  std::string detail;
  for (std::size_t i = 0; i < std::min<std::size_t>(groups.size(), 6); ++i)
    detail += (i == 0 ? "road " : "; ") + Ranges(FromOne(groups[i]), 6) + ": board " +
              BoardName(report.roads[groups[i].front()].run.board);
  if (groups.size() > 6) detail += "; …";
  findings.push_back({Weight::Remark, "equal-roads",
                      Count(groups.size(), "group") + " of roads that leave equal boards", detail, "roads"});
}

}  // namespace

std::vector<Finding> FindingsOf(const Report& report) {
  std::vector<Finding> findings;
  AddFaults(report, findings);
  AddRoads(report, findings);
  AddScript(report, findings);
  AddRemarks(report, findings);
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& left, const Finding& right) { return left.weight < right.weight; });
  return findings;
}

std::string_view WordOf(Weight weight) {
  return weight == Weight::Grave ? "grave" : weight == Weight::Warning ? "warning" : "remark";
}

std::size_t SeriousCount(const std::vector<Finding>& findings) {
  return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.weight != Weight::Remark;
  }));
}

std::string Verdict(const Report& report, const std::vector<Finding>& findings) {
  const auto count = [&findings](Weight weight) {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [weight](const Finding& finding) { return finding.weight == weight; }));
  };
  std::string text;
  if (count(Weight::Grave) > 0) text = Count(count(Weight::Grave), "grave finding");
  if (count(Weight::Warning) > 0)
    text += (text.empty() ? "" : " and ") + Count(count(Weight::Warning), "warning");
  if (text.empty()) text = "Nothing found";
  text += " on " + Count(report.roads.size(), "road");
  if (report.hasFaults) text += " and under " + Count(report.faults.size(), "fault");
  return text + ".";
}

}  // namespace varnok::rehearsal
