#include <algorithm>

#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kShownLines = 5000;

Element ScriptRow(const Report& report, std::size_t index) {
  const ScriptLine& line = report.script[index];
  const std::string number = std::to_string(index + 1);
  Element row("tr");
  row.Set("id", "line-" + number);
  // A single road need not reach everything.
  std::string mark;
  if (line.isCommand && line.reached > 0) {
    row.Class("reached");
    mark = report.isAllRoads ? Grouped(line.reached) : "●";
  } else if (line.isCommand && report.isAllRoads) {
    row.Class("unreached");
    mark = "no road";
  }
  return row.Add(Element("th").Set("scope", "row").Text(number))
      .Add(CellOfText(mark, "mark"))
      .Add(Element("td").Add(Element("code").Text(line.text)));
}

}  // namespace

Element ScriptChapter(const Report& report) {
  Element chapter = Chapter("script", "Script");
  const std::size_t unreached = report.UnreachedLines().size();
  std::string remark = "Lines with a dot were reached; " + Count(unreached, "other command") + " not.";
  if (report.isAllRoads)
    remark = "The number beside a line is that of the roads that reach it; " +
             (unreached == 0 ? "every command is reached." : Count(unreached, "command") + " by none.");
  chapter.Add(Aside(remark));
  Element body("tbody");
  const std::size_t shown = std::min(report.script.size(), kShownLines);
  for (std::size_t i = 0; i < shown; ++i) body.Add(ScriptRow(report, i));
  Element table("table");
  chapter.Add(table.Class("script").Add(HeadRow({"Line", "Roads", "Text"})).Add(body));
  AddRest(chapter, report.script.size(), shown, "line");
  return chapter;
}

}  // namespace varnok::rehearsal
