#include "rehearsal/reports/html_report.h"

#include <algorithm>

#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/findings.h"
#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

Element PageTitle(const Report& report) {
  Element place("p");
  place.Text("on the board ").Add(Element("code").Text(report.board));
  if (!report.command.empty()) {
    std::string command = "varnok";
    for (const std::string& word : report.command) command += " " + word;
    place.Text(", run as ").Add(Element("code").Text(command));
  }
  return Element("header")
      .Add(Element("p").Class("kind").Text("Rehearsal"))
      .Add(Element("h1").Text(report.package))
      .Add(place);
}

Element ScriptFigure(const Report& report) {
  std::size_t commands = 0;
  for (const ScriptLine& line : report.script) commands += line.isCommand ? 1 : 0;
  return Figure("Script lines reached", Grouped(commands - report.UnreachedLines().size()),
                "of " + Grouped(commands));
}

/// The longest run, and the most requests and writes of one.
void AddRunFigures(const Report& report, Element& list) {
  Run most;
  std::size_t errors = 0;
  for (const Road& road : report.roads) {
    most.microseconds = std::max(most.microseconds, road.run.microseconds);
    most.stalled = std::max(most.stalled, road.run.stalled);
    most.requests = std::max(most.requests, road.run.requests);
    most.writes = std::max(most.writes, road.run.writes);
    errors += !road.joins && road.run.exitStatus != 0 ? 1 : 0;
  }
  list.Add(Figure("Roads", Grouped(report.roads.size()),
                  errors == 0 ? "all end with status 0" : Grouped(errors) + " with another status than 0"))
      .Add(Figure("Boards they leave", Grouped(report.boards.size()),
                  report.boards.size() == 1 ? "on every road the same" : "different ones"))
      .Add(Figure("Longest run", TimeWords(most.microseconds),
                  "up to " + TimeWords(most.stalled) + " of waits"))
      .Add(Figure("Requests of a run", Grouped(most.requests),
                  "at most; " + Grouped(most.writes) + " changed the board"));
}

Element Figures(const Report& report) {
  Element list("dl");
  list.Class("figures");
  AddRunFigures(report, list);
  if (!report.script.empty()) list.Add(ScriptFigure(report));
  if (report.hasFaults) {
    const auto counts = CountCells(report);
    std::size_t harmless = 0;
    for (std::size_t i = 0; i < kCellCount; ++i) harmless += IsGrave(static_cast<Cell>(i)) ? 0 : counts[i];
    list.Add(Figure("Faults without harm", Grouped(harmless), "of " + Grouped(report.faults.size())));
  }
  return list;
}

Element Summary(const Report& report) {
  const std::vector<Finding> findings = FindingsOf(report);
  return SummaryOf(Verdict(report, findings), findings).Add(Figures(report));
}

Element PageFoot(const Report& report) {
  std::string text;
  if (report.seconds > 0)
    text = Count(report.runs, "run") + " of the program on this computer in " +
           TimeWords(static_cast<std::uint64_t>(report.seconds * 1e6)) + " on " + Count(report.cores, "core");
  return Element("footer").Text(
      text +
      ". Times of roads are those that the runs would take on a real board, the operator's time left out.");
}

}  // namespace

std::string HtmlReport(const Report& report) {
  struct Part {
    std::string_view id;
    std::string_view title;
    bool isThere;
    Element (*make)(const Report&);
  };
  const Part parts[] = {{"roads", "Roads", true, RoadsChapter},
                        {"boards", "Boards", !report.boards.empty(), BoardsChapter},
                        {"script", "Script", !report.script.empty(), ScriptChapter},
                        {"traffic", "Time line", true, TrafficChapter},
                        {"faults", "Faults", report.hasFaults, FaultsChapter}};
  Element links("nav");
  links.Set("aria-label", "Chapters");
  Element content("main");
  content.Add(Summary(report));
  for (const Part& part : parts)
    if (part.isThere) links.Add(Element("a").Set("href", "#" + std::string(part.id)).Text(part.title));
  content.Add(links);
  for (const Part& part : parts)
    if (part.isThere) content.Add(part.make(report));
  Element body("body");
  body.Add(PageTitle(report)).Add(content).Add(PageFoot(report));
  return PageMarkup("Rehearsal of " + report.package, body);
}

}  // namespace varnok::rehearsal
