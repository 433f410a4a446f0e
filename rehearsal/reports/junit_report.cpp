#include "rehearsal/reports/junit_report.h"

#include <algorithm>
#include <set>

#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/findings.h"
#include "rehearsal/reports/junit_suite.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

std::string PackageCases(const Report& report) {
  struct Rule {
    std::string_view rule;
    std::string_view name;
  };
  constexpr Rule kRules[] = {{"unreached", "every line of the script is reached"},
                             {"unset-tag", "every tag is set on a road"},
                             {"cut", "no road was left out"}};
  const std::vector<Finding> findings = FindingsOf(report);
  Suite suite("package", report.package);
  for (const Rule& rule : kRules) {
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [&rule](const Finding& f) { return f.rule == rule.rule; });
    if (found == findings.end()) {
      suite.Case(rule.name, 0, nullptr);
      continue;
    }
    const Element failure = FailureElement(rule.rule, found->title + ": " + found->detail);
    suite.Case(rule.name, 0, &failure);
  }
  return suite.Markup();
}

std::string RoadCases(const Report& report) {
  const std::set<std::size_t> broken(report.brokenRoads.begin(), report.brokenRoads.end());
  Suite suite("roads", report.package);
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    const Road& road = report.roads[i];
    std::string name = RoadName(i) + ":";
    for (const Answer& answer : road.answers)
      if (answer.question < report.questions.size())
        name += (name.ends_with(':') ? " " : "; ") + Shortened(report.questions[answer.question].text, 60) +
                " " + AnswerWords(report.questions[answer.question], answer);
    if (road.joins) name += ", then as " + RoadName(*road.joins);
    const Element failure = FailureElement("broken-road", EndWords(road.run.exitStatus, road.run.message) +
                                                              " after " + Count(road.run.writes, "write"));
    suite.Case(name, road.run.microseconds, broken.contains(i) ? &failure : nullptr);
  }
  return suite.Markup();
}

std::string FaultCases(const Report& report) {
  Suite suite("faults", report.package);
  for (const FaultRun& run : report.faults) {
    const Cell cell = CellOf(run);
    const Element failure = FailureElement(WordsOf(cell).title, Explanation(run));
    suite.Case(RoadName(run.road) + ", request " + std::to_string(run.request) + ", " +
                   RequestNames(report, run.road, {run.request}) + ": " + run.kind,
               0, IsGrave(cell) ? &failure : nullptr);
  }
  return suite.Markup();
}

}  // namespace

std::string JunitReport(const Report& report) {
  std::string suites = report.isAllRoads ? PackageCases(report) : "";
  suites += RoadCases(report);
  if (report.hasFaults) suites += FaultCases(report);
  return SuitesMarkup(suites);
}

}  // namespace varnok::rehearsal
