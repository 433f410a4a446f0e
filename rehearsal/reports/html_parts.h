// What the chapters of the page are put together from, and the chapters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rehearsal/report.h"
#include "rehearsal/reports/element.h"
#include "rehearsal/reports/findings.h"

namespace varnok::rehearsal {

Element RoadsChapter(const Report& report);
Element BoardsChapter(const Report& report);
Element ScriptChapter(const Report& report);
Element TrafficChapter(const Report& report);
Element FaultsChapter(const Report& report);

/// The whole page around its body.
std::string PageMarkup(std::string_view title, const Element& body);
/// What the page begins with: one sentence, and what was found.
Element SummaryOf(std::string_view verdict, const std::vector<Finding>& findings);
/// A number of the summary with its name, and what else belongs to it.
Element Figure(std::string_view name, std::string_view value, std::string_view more);

/// The page's style sheet.
std::string_view PageStyle();

/// A chapter with its title.
Element Chapter(std::string_view id, std::string_view title);
/// What opens: `summary` is always seen.
Element Foldable(const Element& summary, bool isOpen);
/// A remark in small letters.
Element Aside(std::string_view text);
/// "Not shown: 12 roads." or nothing.
void AddRest(Element& parent, std::size_t count, std::size_t shown, std::string_view noun);
/// A link to a board's description.
Element BoardLink(std::size_t board);

/// One row of a table; `cells` are td.
Element HeadRow(const std::vector<std::string>& titles);
/// A table cell with a text; `names` are style classes.
Element CellOfText(std::string_view text, std::string_view names = {});

/// A bar of a strip, in the strip's own units.
struct Bar {
  std::size_t begin = 0;
  std::size_t length = 0;
  std::string_view style;  ///< classes
  unsigned height = 10;    ///< of 10, from below: what colour says, height says too
  std::string title{};     ///< shown where a pointer rests; may be empty
};
/// A drawing as wide as its place: `length` units from left to right. `label` says what it shows.
Element Strip(std::size_t length, const std::vector<Bar>& bars, std::string_view label);

}  // namespace varnok::rehearsal
