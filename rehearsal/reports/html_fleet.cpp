#include <algorithm>

#include "rehearsal/reports/fleet_groups.h"
#include "rehearsal/reports/fleet_report.h"
#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kShownChanges = 200;

Element FleetTitle(const Fleet& fleet) {
  std::string command = "varnok";
  for (const std::string& word : fleet.command) command += " " + word;
  return Element("header")
      .Add(Element("p").Class("kind").Text("Rehearsal on many boards"))
      .Add(Element("h1").Text(fleet.package))
      .Add(Element("p")
               .Text("on the boards in ")
               .Add(Element("code").Text(fleet.folder))
               .Text(", run as ")
               .Add(Element("code").Text(command)));
}

Element FleetSummary(const Fleet& fleet, const std::vector<FleetGroup>& groups) {
  std::size_t harmed = 0;
  std::uint64_t longest = 0;
  for (const FleetBoard& board : fleet.boards) {
    harmed += board.TheFate() <= Fate::Doubtful ? 1 : 0;
    for (const FleetEnd& end : board.ends) longest = std::max(longest, end.microseconds);
  }
  Element figures("dl");
  figures.Class("figures")
      .Add(Figure("Boards", Grouped(fleet.boards.size()),
                  Count(fleet.strays.size(), "folder") + " without one"))
      .Add(Figure("Groups", Grouped(groups.size()), "of boards that come to the same"))
      .Add(Figure("Damaged or doubtful", Grouped(harmed), "of the boards"))
      .Add(Figure("Longest run", TimeWords(longest), "on a real board, the operator's time left out"));
  return SummaryOf(Verdict(fleet, groups), FindingsOf(fleet)).Add(figures);
}

std::string GroupId(std::size_t group) {
  return "group-" + std::to_string(group + 1);
}

/// A row for each end; of further ends of a group the first cells are empty.
Element GroupsTable(const Fleet& fleet, const std::vector<FleetGroup>& groups) {
  Element body("tbody");
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const FleetGroup& group = groups[i];
    const Element link = Element("th")
                             .Set("scope", "row")
                             .Add(Element("a").Set("href", "#" + GroupId(i)).Text(std::to_string(i + 1)));
    const std::vector<FleetEnd>& ends = fleet.boards[group.boards.front()].ends;
    Element row("tr");
    row.Add(link).Add(CellOfText(Count(group.boards.size(), "board"), "number"));
    if (ends.empty())
      body.Add(row.Add(CellOfText(WordsOf(group.fate).word)).Add(CellOfText("")).Add(CellOfText("")));
    for (const FleetEnd& end : ends) {
      body.Add(row.Add(CellOfText(WordsOf(end.fate).word))
                   .Add(CellOfText(TimeWords(LongestRun(fleet, group, end)), "number"))
                   .Add(CellOfText(EndWords(end))));
      row = Element("tr");
      row.Add(Element("th")).Add(CellOfText(""));
    }
  }
  Element table("table");
  return table.Class("plain fleet")
      .Add(HeadRow({"Group", "Boards", "Become", "Time", "How they end"}))
      .Add(body);
}

Element ChangesTable(const FleetEnd& end) {
  const std::vector<boards::Difference>& all = end.first.differences;
  Element body("tbody");
  const std::size_t shown = std::min(all.size(), kShownChanges);
  for (std::size_t i = 0; i < shown; ++i)
    body.Add(Element("tr")
                 .Add(CellOfText(all[i].part))
                 .Add(CellOfText(all[i].group))
                 .Add(CellOfText(DifferenceWords(all[i]))));
  Element table("table");
  table.Class("plain changes").Add(HeadRow({"Part", "Area or record", "Change"})).Add(body);
  Element details =
      Foldable(Element("span").Text(Count(all.size(), "change") + " on the first board"), false);
  details.Add(table);
  AddRest(details, all.size(), shown, "change");
  return details;
}

void AddEnd(const Fleet& fleet, const FleetEnd& end, Element& article) {
  article.Add(Element("p").Add(Element("b").Text(WordsOf(end.fate).word)).Text(": " + EndWords(end)));
  Element reasons("ul");
  for (const std::string& reason : end.reasons) reasons.Add(Element("li").Text(reason));
  if (!reasons.IsEmpty()) article.Add(reasons);
  if (fleet.isAllRoads) article.Add(Aside(RoadsWords(end)));
  if (!end.first.differences.empty()) article.Add(ChangesTable(end));
}

void AddDevice(const Fleet& fleet, const FleetGroup& group, const DeviceResults& device, Element& list) {
  Element item("li");
  item.Add(Element("b").Text(device.device)).Text(": " + ResultsWords(group, device));
  const std::size_t results = device.alike.size();
  for (std::size_t i = 0; results > 1 && results < group.boards.size() && i < results; ++i)
    item.Text(i == 0 ? ": " : " | ").Text(NamesOf(fleet, device.alike[i]));
  std::string fields;
  for (const std::string& field : device.fields) fields += (fields.empty() ? "" : "; ") + field;
  if (!fields.empty()) item.Add(Aside("They differ in: " + Shortened(fields, 600)));
  list.Add(item);
}

Element GroupArticle(const Fleet& fleet, const FleetGroup& group, std::size_t number) {
  const FleetBoard& first = fleet.boards[group.boards.front()];
  Element article("article");
  article.Set("id", GroupId(number))
      .Add(Element("h3").Text("Group " + std::to_string(number + 1) + ": " +
                              Count(group.boards.size(), "board") + " " +
                              std::string(WordsOf(group.fate).word)))
      .Add(Element("p").Class("names").Text(NamesOf(fleet, group.boards)))
      .Add(Aside(WordsOf(group.fate).meaning));
  if (!first.error.empty()) article.Add(Element("p").Text(first.error));
  for (const FleetEnd& end : first.ends) AddEnd(fleet, end, article);
  Element list("ul");
  for (const DeviceResults& device : group.devices)
    if (group.boards.size() > 1) AddDevice(fleet, group, device, list);
  return list.IsEmpty() ? article : article.Add(list);
}

/// Empty where every line is reached and every tag is set.
Element FleetScript(const Fleet& fleet) {
  Element chapter = Chapter("script", "Script");
  const std::vector<std::size_t> lines = fleet.UnreachedLines();
  Element body("tbody");
  for (const std::size_t line : lines)
    body.Add(Element("tr")
                 .Add(Element("th").Set("scope", "row").Text(std::to_string(line)))
                 .Add(Element("td").Add(Element("code").Text(fleet.script[line - 1].text))));
  Element table("table");
  table.Class("plain").Add(HeadRow({"Line", "No road of any board reaches it"})).Add(body);
  if (!lines.empty()) chapter.Add(table);
  std::string tags;
  for (const std::string& tag : fleet.unsetTags) tags += (tags.empty() ? "" : ", ") + tag;
  if (!tags.empty()) chapter.Add(Element("p").Text("No road of any board sets these tags: " + tags + "."));
  return chapter;
}

}  // namespace

std::string FleetHtml(const Fleet& fleet) {
  const std::vector<FleetGroup> groups = GroupsOf(fleet);
  Element chapter = Chapter("boards", "Boards");
  chapter.Add(GroupsTable(fleet, groups));
  for (std::size_t i = 0; i < groups.size(); ++i) chapter.Add(GroupArticle(fleet, groups[i], i));
  Element content("main");
  content.Add(FleetSummary(fleet, groups)).Add(chapter);
  if (fleet.isAllRoads && !(fleet.UnreachedLines().empty() && fleet.unsetTags.empty()))
    content.Add(FleetScript(fleet));
  const std::string foot = Count(fleet.runs, "run") +
                           " of the program on this computer: " + std::string(RoadsChoiceWords(fleet)) + ".";
  Element body("body");
  body.Add(FleetTitle(fleet)).Add(content).Add(Element("footer").Text(foot));
  return PageMarkup("Rehearsal of " + fleet.package + " on many boards", body);
}

}  // namespace varnok::rehearsal
