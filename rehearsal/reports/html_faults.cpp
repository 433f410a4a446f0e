#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kShownMaps = 8;
constexpr std::size_t kShownCells = 60'000;  // after so many no other map begins
constexpr std::size_t kShownGroups = 60;
constexpr std::array<unsigned, kCellCount> kHeights = {10, 10, 9, 8, 7, 7, 6, 4, 3, 2};

Element ResultTable(const Report& report) {
  const auto counts = CountCells(report);
  Element body("tbody");
  for (std::size_t i = 0; i < kCellCount; ++i) {
    const CellWords& words = WordsOf(static_cast<Cell>(i));
    Element row("tr");
    Element name("th");
    name.Set("scope", "row")
        .Add(Strip(10, {{0, 10, words.style, kHeights[i]}}, "how it is drawn"))
        .Text(" " + std::string(words.title));
    body.Add(row.Add(name)
                 .Add(CellOfText(Grouped(counts[i]),
                                 counts[i] > 0 && IsGrave(static_cast<Cell>(i)) ? "number bad" : "number"))
                 .Add(CellOfText(words.meaning)));
  }
  Element table("table");
  return table.Class("plain results").Add(HeadRow({"Result", "Runs", "What it means"})).Add(body);
}

/// The results of one kind of fault by request; nothing where it was not tried.
using HeatRow = std::vector<std::optional<Cell>>;

struct HeatMap {
  std::size_t road = 0;
  std::size_t requests = 0;
  std::size_t grave = 0;
  std::size_t runs = 0;
  std::vector<std::pair<std::string, HeatRow>> kinds{};  ///< in the order in which they were tried
};

std::vector<HeatMap> MakeHeatMaps(const Report& report) {
  std::map<std::size_t, HeatMap> byRoad;
  std::map<std::pair<std::size_t, std::string_view>, std::size_t> places;
  for (const FaultRun& run : report.faults) {
    if (run.request == 0) continue;
    HeatMap& map = byRoad[run.road];
    map.road = run.road;
    const auto [place, isNew] =
        places.emplace(std::pair{run.road, std::string_view(run.kind)}, map.kinds.size());
    if (isNew) map.kinds.push_back({run.kind, {}});
    HeatRow& row = map.kinds[place->second].second;
    if (row.size() < run.request) row.resize(run.request);
    std::optional<Cell>& cell = row[run.request - 1];
    const Cell came = CellOf(run);
    cell = std::min(cell.value_or(came), came);
    map.requests = std::max(map.requests, run.request);
    map.grave += IsGrave(came) ? 1 : 0;
    ++map.runs;
  }
  std::vector<HeatMap> maps;
  maps.reserve(byRoad.size());
  for (auto& [road, map] : byRoad) maps.push_back(std::move(map));
  std::stable_sort(maps.begin(), maps.end(),
                   [](const HeatMap& left, const HeatMap& right) { return left.grave > right.grave; });
  return maps;
}

Element HeatStrip(const HeatRow& row, std::size_t requests, const std::vector<Exchange>& traffic) {
  std::vector<Bar> bars;
  std::size_t grave = 0;
  for (std::size_t i = 0; i < row.size();) {
    std::size_t end = i + 1;
    while (end < row.size() && row[end] == row[i]) ++end;
    if (row[i]) {
      const CellWords& words = WordsOf(*row[i]);
      Bar bar{i, end - i, words.style, kHeights[static_cast<std::size_t>(*row[i])]};
      if (IsGrave(*row[i])) {
        grave += end - i;
        bar.title = "request " + std::to_string(i + 1) + (end - i > 1 ? "–" + std::to_string(end) : "") +
                    (i < traffic.size() ? " (" + traffic[i].name + ")" : "") + ": " +
                    std::string(words.title);
      }
      bars.push_back(bar);
    }
    i = end;
  }
  return Strip(requests, bars, grave == 0 ? "harmless" : Count(grave, "bad request"));
}

/// Where the run writes, above what faults do there.
Element RequestsRow(std::size_t requests, const std::vector<Exchange>& traffic) {
  std::vector<Bar> bars;
  for (std::size_t i = 0; i < std::min(requests, traffic.size()); ++i) {
    const std::string_view style = traffic[i].isWrite ? "write" : "read";
    const unsigned height = traffic[i].isWrite ? 10 : 5;
    if (!bars.empty() && bars.back().style == style)
      ++bars.back().length;
    else
      bars.push_back({i, 1, style, height});
  }
  Element row("tr");
  return row.Class("requests")
      .Add(Element("th").Set("scope", "row").Text("Requests: reads low, writes high"))
      .Add(Element("td").Add(Strip(requests, bars, "reads and writes")))
      .Add(CellOfText(""));
}

Element HeatTable(const HeatMap& map, const std::vector<Exchange>& traffic) {
  // Kinds with the same results are one row.
  std::vector<std::pair<std::vector<std::string>, const HeatRow*>> rows;
  for (const auto& kind : map.kinds) {
    const auto same = std::find_if(rows.begin(), rows.end(),
                                   [&kind](const auto& row) { return *row.second == kind.second; });
    if (same == rows.end())
      rows.push_back({{kind.first}, &kind.second});
    else
      same->first.push_back(kind.first);
  }
  Element body("tbody");
  body.Add(RequestsRow(map.requests, traffic));
  for (const auto& [kinds, cells] : rows) {
    const auto grave = static_cast<std::size_t>(
        std::count_if(cells->begin(), cells->end(),
                      [](const std::optional<Cell>& cell) { return cell && IsGrave(*cell); }));
    Element row("tr");
    Element title("th");
    title.Set("scope", "row").Text(KindsWords(kinds, grave > 0 ? 6 : 2));
    body.Add(row.Add(title)
                 .Add(Element("td").Add(HeatStrip(*cells, map.requests, traffic)))
                 .Add(CellOfText(grave == 0 ? "–" : Grouped(grave * kinds.size()),
                                 grave == 0 ? "number" : "number bad")));
  }
  Element table("table");
  return table.Class("map heat")
      .Add(HeadRow({"Fault", "Request 1 to " + std::to_string(map.requests), "Bad"}))
      .Add(body);
}

Element GroupTable(const Report& report, const std::vector<FaultGroup>& groups) {
  Element body("tbody");
  const std::size_t shown = std::min(groups.size(), kShownGroups);
  for (std::size_t i = 0; i < shown; ++i) {
    const FaultGroup& group = groups[i];
    Element row("tr");
    body.Add(row.Add(Element("th").Set("scope", "row").Text(WordsOf(group.cell).title))
                 .Add(CellOfText(KindsWords(group.kinds, 4)))
                 .Add(CellOfText(PlaceWords(report, group, 12)))
                 .Add(CellOfText(Explanation(*group.example))));
  }
  Element table("table");
  Element part("div");
  part.Add(Element("h3").Text("The bad ones"))
      .Add(table.Class("plain groups").Add(HeadRow({"Result", "Fault", "Where", "What happens"})).Add(body));
  AddRest(part, groups.size(), shown, "group");
  return part;
}

}  // namespace

Element FaultsChapter(const Report& report) {
  Element chapter = Chapter("faults", "Faults");
  chapter
      .Add(Aside("Tried: " + FaultChoiceWords(report) + ", one a run: " + Count(report.faults.size(), "run") +
                 "."))
      .Add(ResultTable(report));
  const std::vector<FaultGroup> groups = GraveGroups(report);
  if (!groups.empty()) chapter.Add(GroupTable(report, groups));
  const std::vector<HeatMap> maps = MakeHeatMaps(report);
  chapter.Add(Element("h3").Text("By request")).Add(Aside("The higher, the graver."));
  std::size_t shown = 0;
  for (std::size_t cells = 0; shown < std::min(maps.size(), kShownMaps) && cells < kShownCells; ++shown)
    cells += maps[shown].runs;
  for (std::size_t i = 0; i < shown; ++i) {
    const HeatMap& map = maps[i];
    Element summary("span");
    summary.Add(Element("b").Text(RoadName(map.road)))
        .Text(", " + Count(map.runs, "fault") + ", " + Grouped(map.grave) + " of them bad");
    const std::vector<Exchange> traffic =
        map.road < report.roads.size() ? report.roads[map.road].run.traffic : std::vector<Exchange>{};
    chapter.Add(Foldable(summary, i == 0).Add(HeatTable(map, traffic)));
  }
  AddRest(chapter, maps.size(), shown, "road");
  return chapter;
}

}  // namespace varnok::rehearsal
