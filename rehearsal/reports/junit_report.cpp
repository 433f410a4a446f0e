#include "rehearsal/reports/junit_report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

#include "rehearsal/reports/element.h"
#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/findings.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

std::string XmlSeconds(std::uint64_t microseconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.6f", static_cast<double>(microseconds) / 1e6);
  return text.data();
}

Element FailureElement(std::string_view type, std::string_view message) {
  return Element("failure").Set("type", type).Set("message", message);
}

/// Counts what is put into it.
class Suite {
 public:
  Suite(std::string_view name, std::string_view package) : name_(name), package_(package) {}

  /// `failure` may be null.
  void Case(std::string_view name, std::uint64_t microseconds, const Element* failure) {
    Element element("testcase");
    element.Set("classname", package_).Set("name", name).Set("time", XmlSeconds(microseconds));
    if (failure != nullptr) element.Add(*failure);
    ++tests_;
    failures_ += failure != nullptr ? 1 : 0;
    microseconds_ += microseconds;
    cases_ += element.Markup() + "\n";
  }

  std::string Markup() const {
    std::string open = Element("testsuite")
                           .Set("name", name_)
                           .Set("tests", tests_)
                           .Set("failures", failures_)
                           .Set("errors", 0)
                           .Set("time", XmlSeconds(microseconds_))
                           .Markup();
    constexpr std::string_view kEnd = "</testsuite>";
    open.insert(open.size() - kEnd.size(), "\n" + cases_);
    return open + "\n";
  }

 private:
  std::string_view name_;
  std::string_view package_;
  std::size_t tests_ = 0;
  std::size_t failures_ = 0;
  std::uint64_t microseconds_ = 0;
  std::string cases_;
};

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
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n" + suites + "</testsuites>\n";
}

}  // namespace varnok::rehearsal
