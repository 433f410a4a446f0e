#include "rehearsal/reports/html_parts.h"

#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

Element PageHead(std::string_view title) {
  Element head("head");
  head.Add(Element("meta").Set("charset", "utf-8"))
      .Add(Element("meta")
               .Set("http-equiv", "Content-Security-Policy")
               .Set("content", "default-src 'none'; style-src 'unsafe-inline'"))
      .Add(Element("meta").Set("name", "viewport").Set("content", "width=device-width, initial-scale=1"))
      .Add(Element("meta").Set("name", "color-scheme").Set("content", "light dark"))
      .Add(Element("title").Text(title));
  return head.Style(PageStyle());
}

Element FindingsList(const std::vector<Finding>& findings) {
  Element list("ul");
  list.Class("findings");
  for (const Finding& finding : findings)
    list.Add(Element("li")
                 .Class(WordOf(finding.weight))
                 .Add(Element("b").Class("weight").Text(WordOf(finding.weight)))
                 .Add(Element("a").Set("href", "#" + std::string(finding.chapter)).Text(finding.title))
                 .Add(Element("span").Text(finding.detail)));
  return list;
}

}  // namespace

std::string PageMarkup(std::string_view title, const Element& body) {
  return "<!DOCTYPE html>\n" + Element("html").Set("lang", "en").Add(PageHead(title)).Add(body).Markup() +
         "\n";
}

Element SummaryOf(std::string_view verdict, const std::vector<Finding>& findings) {
  const std::string_view weight = findings.empty() ? "remark" : WordOf(findings.front().weight);
  Element section("section");
  section.Set("id", "summary").Add(Element("h2").Class(std::string("verdict ").append(weight)).Text(verdict));
  if (!findings.empty()) section.Add(FindingsList(findings));
  return section;
}

Element Figure(std::string_view name, std::string_view value, std::string_view more) {
  Element figure("div");
  return figure.Add(Element("dt").Text(name))
      .Add(Element("dd").Add(Element("strong").Text(value)).Add(Element("span").Text(more)));
}

Element Chapter(std::string_view id, std::string_view title) {
  return Element("section").Set("id", id).Add(Element("h2").Text(title));
}

Element Foldable(const Element& summary, bool isOpen) {
  Element details("details");
  if (isOpen) details.Set("open");
  return details.Add(Element("summary").Add(summary));
}

Element Aside(std::string_view text) {
  return Element("p").Class("aside").Text(text);
}

void AddRest(Element& parent, std::size_t count, std::size_t shown, std::string_view noun) {
  if (count > shown)
    parent.Add(Aside("Not shown here: " + Count(count - shown, std::string("more ").append(noun)) + "."));
}

Element BoardLink(std::size_t board) {
  const std::string name = BoardName(board);
  return Element("a").Class("board").Set("href", "#board-" + name).Text("board " + name);
}

Element HeadRow(const std::vector<std::string>& titles) {
  Element row("tr");
  for (const std::string& title : titles) row.Add(Element("th").Set("scope", "col").Text(title));
  return Element("thead").Add(row);
}

Element CellOfText(std::string_view text, std::string_view names) {
  Element cell("td");
  if (!names.empty()) cell.Class(names);
  return cell.Text(text);
}

Element Strip(std::size_t length, const std::vector<Bar>& bars, std::string_view label) {
  Element svg("svg");
  svg.Class("strip")
      .Set("viewBox", "0 0 " + std::to_string(length) + " 10")
      .Set("preserveAspectRatio", "none")
      .Set("role", "img")
      .Set("aria-label", label);
  for (const Bar& bar : bars) {
    Element rect("rect");
    rect.Class(bar.style)
        .Set("x", bar.begin)
        .Set("y", 10 - bar.height)
        .Set("width", bar.length)
        .Set("height", bar.height);
    if (!bar.title.empty()) rect.Add(Element("title").Text(bar.title));
    svg.Add(rect);
  }
  return svg;
}

}  // namespace varnok::rehearsal
