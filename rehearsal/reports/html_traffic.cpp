#include <algorithm>
#include <map>

#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/time_line.h"
#include "rehearsal/reports/told_roads.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kShownWaits = 8;
constexpr std::size_t kShownCommands = 24;
constexpr std::size_t kShownConsole = 20'000;  // bytes

Element Lane(std::string_view name, const std::vector<Stretch>& stretches, std::string_view style,
             std::string_view label) {
  std::vector<Bar> bars;
  bars.reserve(stretches.size());
  for (const Stretch& stretch : stretches) bars.push_back({stretch.begin, stretch.length, style});
  Element row("tr");
  return row.Add(Element("th").Set("scope", "row").Text(name))
      .Add(Element("td").Add(Strip(TimeLine::kUnits, bars, label)))
      .Add(CellOfText(label, "areas"));
}

Element LaneTable(const Run& run, const TimeLine& line) {
  std::size_t writes = 0;
  std::size_t lost = 0;
  for (const Exchange& exchange : run.traffic) {
    writes += exchange.isWrite ? 1 : 0;
    lost += exchange.isAnswered ? 0 : 1;
  }
  std::uint64_t waited = 0;
  std::size_t cut = 0;
  for (const Wait& wait : line.waits) {
    waited += wait.length;
    cut += wait.isCut ? 1 : 0;
  }
  Element body("tbody");
  body.Add(Lane("Reads", line.reads, "read", Count(run.traffic.size() - writes, "request")))
      .Add(Lane("Writes", line.writes, "write",
                Count(writes, "request") + ", " + Grouped(run.writes) + " changed the board"));
  if (lost > 0) body.Add(Lane("Lost", line.lost, "lost", Count(lost, "request") + " without an answer"));
  body.Add(Lane("Waits", line.shortWaits, "wait", TimeWords(waited) + " between requests"));
  if (cut > 0) body.Add(Lane("Long waits", line.cutWaits, "cut", Grouped(cut) + ", drawn short"));
  Element table("table");
  return table.Class("map lanes")
      .Add(HeadRow({"Lane", "0 s to " + TimeWords(run.microseconds), "In all"}))
      .Add(body);
}

std::string NameOfRequest(const Run& run, std::size_t number) {
  if (number == 0) return "the start";
  if (number > run.traffic.size()) return "the end";
  return "request " + std::to_string(number) + " (" + run.traffic[number - 1].name + ")";
}

/// Waits of one length together: the pauses that the program keeps stand out by their number.
Element WaitTable(const Run& run, const TimeLine& line) {
  struct Sum {
    std::string length;
    std::size_t count = 0;
    std::uint64_t time = 0;
    const Wait* first = nullptr;
  };
  std::vector<Sum> sums;
  for (const Wait& wait : line.waits) {
    const std::string length = TimeWords(wait.length);
    auto sum =
        std::find_if(sums.begin(), sums.end(), [&length](const Sum& each) { return each.length == length; });
    if (sum == sums.end()) sum = sums.insert(sums.end(), {length, 0, 0, &wait});
    ++sum->count;
    sum->time += wait.length;
  }
  std::stable_sort(sums.begin(), sums.end(),
                   [](const Sum& left, const Sum& right) { return left.time > right.time; });
  const std::size_t shown = std::min(sums.size(), kShownWaits);
  Element body("tbody");
  for (std::size_t i = 0; i < shown; ++i) {
    const Sum& sum = sums[i];
    Element row("tr");
    body.Add(row.Add(CellOfText(sum.length, "number"))
                 .Add(CellOfText(Grouped(sum.count), "number"))
                 .Add(CellOfText(TimeWords(sum.time), "number"))
                 .Add(CellOfText(TimeWords(sum.first->begun) + ", between " +
                                 NameOfRequest(run, sum.first->before - 1) + " and " +
                                 NameOfRequest(run, sum.first->before))));
  }
  Element table("table");
  Element fold = Foldable(Element("span").Text("Waits by length"), false);
  fold.Add(table.Class("plain").Add(HeadRow({"Wait", "Times", "In all", "First at"})).Add(body));
  AddRest(fold, sums.size(), shown, "length");
  return fold;
}

Element CommandTable(const Run& run) {
  struct Sum {
    std::size_t requests = 0;
    std::size_t refused = 0;
  };
  std::map<std::string, Sum> byName;
  for (const Exchange& exchange : run.traffic) {
    Sum& sum = byName[exchange.name];
    ++sum.requests;
    sum.refused += exchange.isAnswered && exchange.completionCode == 0 ? 0 : 1;
  }
  std::vector<std::pair<std::string, Sum>> commands(byName.begin(), byName.end());
  std::stable_sort(commands.begin(), commands.end(), [](const auto& left, const auto& right) {
    return left.second.requests > right.second.requests;
  });
  const std::size_t shown = std::min(commands.size(), kShownCommands);
  Element body("tbody");
  for (std::size_t i = 0; i < shown; ++i) {
    const auto& [name, sum] = commands[i];
    Element row("tr");
    body.Add(row.Add(Element("th").Set("scope", "row").Text(name))
                 .Add(CellOfText(Grouped(sum.requests), "number"))
                 .Add(CellOfText(Grouped(sum.refused), "number")));
  }
  Element table("table");
  Element fold = Foldable(Element("span").Text(Count(commands.size(), "command")), false);
  fold.Add(table.Class("plain").Add(HeadRow({"Command", "Requests", "Refused or lost"})).Add(body));
  AddRest(fold, commands.size(), shown, "command");
  return fold;
}

Element ConsoleText(const Run& run) {
  const std::string text = run.transcript + (run.errorOutput.empty() ? "" : "\n" + run.errorOutput);
  Element fold = Foldable(Element("span").Text("What the console shows"), false);
  fold.Add(Element("pre").Add(Element("code").Text(text.substr(0, kShownConsole))));
  if (text.size() > kShownConsole) fold.Add(Aside("It is longer; the JSON has all of it."));
  return fold;
}

}  // namespace

Element TrafficChapter(const Report& report) {
  Element chapter = Chapter("traffic", "Time line");
  const std::vector<std::size_t> roads = ToldRoads(report);
  chapter.Add(
      Aside("Requests and the waits between them in virtual time: " +
            std::string(roads.size() > 1 ? "one road for each board." : "the road that was rehearsed.")));
  for (const std::size_t road : roads) {
    const Run& run = report.roads[road].run;
    const TimeLine line = MakeTimeLine(run);
    Element summary("span");
    summary.Add(Element("b").Text(RoadName(road)))
        .Text(", " + Count(run.traffic.size(), "request") + ", " + TimeWords(run.microseconds) +
              ", of them " + TimeWords(run.stalled) + " in waits of the program");
    Element fold = Foldable(summary, road == roads.front());
    chapter.Add(fold.Add(LaneTable(run, line))
                    .Add(WaitTable(run, line))
                    .Add(CommandTable(run))
                    .Add(ConsoleText(run)));
  }
  return chapter;
}

}  // namespace varnok::rehearsal
